#include "app/companion_process_win32.h"

#include <windows.h>
// shellapi.h needs windows.h first.
#include <shellapi.h>

#include "core/log.h"

namespace brindle::app {

bool CompanionProcess::Start(const std::string& path, std::function<void(int)> ended) {
  SHELLEXECUTEINFOA info{};
  info.cbSize = sizeof info;
  info.fMask = SEE_MASK_NOCLOSEPROCESS | SEE_MASK_NOASYNC | SEE_MASK_FLAG_NO_UI;
  info.lpVerb = "open";
  info.lpFile = path.c_str();
  info.nShow = SW_HIDE;
  if (!ShellExecuteExA(&info)) return false;
  if (info.hProcess == nullptr) {  // started through something that hands out no process
    log::Warning("the companion's end cannot be watched; it will not be started again");
    process_.reset();
    ++generation_;
    return true;
  }
  // A companion started before is no longer watched: its end says nothing.
  process_ = std::make_unique<asio::windows::object_handle>(io_, info.hProcess);
  const uint64_t generation = ++generation_;
  std::weak_ptr<int> alive = alive_;
  process_->async_wait(
      [this, alive, generation, ended = std::move(ended)](const std::error_code& ec) {
        // Cancelled, or this object or this process replaced meanwhile: nothing to say.
        if (ec || alive.expired() || generation != generation_ || !process_) return;
        DWORD code = 0;
        GetExitCodeProcess(process_->native_handle(), &code);
        process_.reset();
        ended(static_cast<int>(code));
      });
  return true;
}

}  // namespace brindle::app
