// The companion's process on Windows: started hidden through the shell's
// "open" verb, its process handle kept so that its end is noticed on the
// proxy's event loop (the program then starts it again).
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include <asio/io_context.hpp>
#include <asio/windows/object_handle.hpp>

namespace brindle::app {

class CompanionProcess {
 public:
  explicit CompanionProcess(asio::io_context& io) : io_(io) {}

  // Call on the io thread. False when the shell could not start it.
  // `ended` gets the exit code, on the io thread, unless the process was
  // started again or this object went first.
  bool Start(const std::string& path, std::function<void(int exitCode)> ended);

 private:
  asio::io_context& io_;
  std::unique_ptr<asio::windows::object_handle> process_;
  std::shared_ptr<int> alive_ = std::make_shared<int>();
  uint64_t generation_ = 0;  // a later start makes an older watch stale
};

}  // namespace brindle::app
