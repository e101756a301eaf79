#include "app/hosted_program.h"

#include <asio/post.hpp>

#include "app/settings_binding.h"
#include "core/log.h"
#include "core/message_box.h"
#include "core/settings_paths.h"
#include "oewin/note_settings.h"

namespace brindle::app {

constexpr const char* kCompanionFile = "SslBridge.exe";

HostedProgram::HostedProgram(ClientHostSystem& system, std::string programDir,
                             std::string settingsDir, ProxyOptions options)
    : system_(system),
      programDir_(std::move(programDir)),
      settingsDir_(std::move(settingsDir)),
      options_(options),
      work_(asio::make_work_guard(io_)) {}

HostedProgram::~HostedProgram() {
  Stop();
  if (boxesRedirected_) SetMessageBoxSink(std::move(previousBoxes_));
}

// A box raised on the proxy's thread (a tunnel that cannot start) is shown
// on the client's thread, so that its modal loop never holds up the relaying.
void HostedProgram::RedirectBoxes() {
  const DWORD uiThread = GetCurrentThreadId();
  MessageBoxSink show = PlatformMessageBoxPresenter();
  previousBoxes_ = SetMessageBoxSink(
      [this, show, uiThread](std::string_view text, std::string_view title, BoxIcon icon) {
        if (GetCurrentThreadId() == uiThread) return show(text, title, icon);
        if (!window_.Post(
                [show, t = std::string(text), c = std::string(title), icon] { show(t, c, icon); }))
          show(text, title, icon);
      });
  boxesRedirected_ = true;
}

bool HostedProgram::Load() {
  if (!window_.Create()) {
    log::Error("the main window could not be created");
    return false;
  }
  RedirectBoxes();
  ioThread_ = std::thread([this] { io_.run(); });

  ProgramHooks hooks;
  hooks.companionFileName = kCompanionFile;
  hooks.launchCompanion = [this] {
    // The companion reads its SslBridge.conf from the settings folder in use.
    ExportSettingsFolder(settingsDir_);
    return system_.ShellOpenHidden(programDir_ + "\\" + kCompanionFile);
  };
  hooks.defaultLanguage = [] { return UserLanguage(); };
  hooks.loadSettings = [this](int16_t language, const ProgramHooks::ProgressSink& sink) {
    return FindSettings(programDir_, settingsDir_, language, sink);
  };

  bool loaded = false, ok = false;
  asio::post(io_, [&, hooks = std::move(hooks)]() mutable {
    proxy_ = std::make_unique<Proxy>(io_, store_, options_);
    services_ = std::make_unique<ProgramServices>(io_, *proxy_, store_, std::move(hooks));
    RunLoadSequence(*services_, [&](std::optional<StartupReport> report) {
      const bool started = report.has_value();
      window_.Post([&, started] {
        ok = started;
        loaded = true;
      });
    });
  });
  window_.PumpUntil(loaded);
  if (ok) {
    SetNoteSettingsSource([this] { return store_.Current(); });
    noteWatch_ = std::make_unique<NoteWindowWatch>();
  }
  return ok;
}

void HostedProgram::CloseTunnels() {
  bool closed = false;
  asio::post(io_, [&] {
    if (!proxy_) {
      window_.Post([&] { closed = true; });
      return;
    }
    proxy_->CloseDown([&] {
      // Not from inside the proxy's own call: the proxy goes after it returns.
      asio::post(io_, [&] {
        services_.reset();
        proxy_.reset();
        window_.Post([&] { closed = true; });
      });
    });
  });
  window_.PumpUntil(closed);
  Stop();
}

void HostedProgram::Stop() {
  noteWatch_.reset();
  SetNoteSettingsSource(nullptr);
  work_.reset();
  io_.stop();
  if (ioThread_.joinable()) ioThread_.join();
  services_.reset();
  proxy_.reset();  // the io thread has ended: nothing else touches it
}

}  // namespace brindle::app
