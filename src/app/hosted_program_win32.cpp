#include "app/hosted_program.h"

#include <asio/post.hpp>

#include <shellapi.h>

#include "app/settings_binding.h"
#include "core/language.h"
#include "core/log.h"
#include "core/message_box.h"
#include "core/settings_file.h"
#include "core/settings_paths.h"
#include "localnet/control_key.h"
#include "oewin/note_settings.h"
#include "oewin/rot_coder.h"

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
  hooks.launchCompanion = [this] { return LaunchCompanion(); };
  hooks.defaultLanguage = [] { return UserLanguage(); };
  hooks.settingsPlaces = {settingsDir_, programDir_};

  bool loaded = false, ok = false;
  asio::post(io_, [&, hooks = std::move(hooks)]() mutable {
    proxy_ = std::make_unique<Proxy>(io_, store_, options_);
    services_ = std::make_unique<ProgramServices>(io_, *proxy_, store_, std::move(hooks));
    companion_ = std::make_unique<CompanionProcess>(io_);
    keeper_ = std::make_unique<CompanionKeeper>(io_, *services_, *proxy_,
                                                [this] { return LaunchCompanion(); });
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
    OpenUserInterface();
  }
  return ok;
}

// On the io thread.
bool HostedProgram::LaunchCompanion() {
  // The companion reads its SslBridge.conf from the settings folder in use.
  ExportSettingsFolder(settingsDir_);
  // The key reaches the companion through the environment it inherits,
  // and only it: the variable is gone again once it has started.
  SetEnvironmentVariableA(localnet::kControlKeyVariable, options_.companionKey.c_str());
  const bool started = companion_->Start(programDir_ + "\\" + kCompanionFile,
                                         [this](int exitCode) { keeper_->Ended(exitCode); });
  SetEnvironmentVariableA(localnet::kControlKeyVariable, nullptr);
  if (started) keeper_->Started();
  return started;
}

void HostedProgram::OpenUserInterface() {
  tunnelControl_ = std::make_unique<ui::ProxyTunnelControl>(
      io_, [this] { return proxy_.get(); },
      [this](std::function<void()> work) { window_.Post(std::move(work)); });
  applier_ = std::make_unique<ui::SettingsApplier>(store_, tunnelControl_.get());
  languageMenu_ = std::make_unique<LanguageMenu>(store_, languageWindows_, [](const Settings& s) {
    (void)SaveSettings2Ini(s); /* a failure is logged by the writer */
  });
  optionsWindow_ =
      std::make_unique<ui::OptionsWindow>(*applier_, languageWindows_, tunnelControl_.get());
  ui::MainWindowActions actions;
  actions.end = [this] { PostMessageW(window_.Handle(), WM_CLOSE, 0, 0); };
  actions.rotCoder = [this] { OpenRotCoder(window_.Handle()); };
  actions.showClient = [this] { ShowClient(); };
  actions.help = [this] { OpenHelp(); };
  ui_ = std::make_unique<ui::MainWindowUi>(window_.Handle(), *applier_, languageWindows_,
                                           *languageMenu_, *optionsWindow_, tunnelControl_.get(),
                                           std::move(actions));
  optionsWindow_->onApplied = [this] { ui_->SettingsChanged(); };
  window_.SetHandler([this](UINT m, WPARAM w, LPARAM l) { return ui_->Handle(m, w, l); });
  // The boxes follow the proxy's display: posted over, never shared.
  asio::post(io_, [this] {
    if (!proxy_) return;
    proxy_->SetDisplayTransferredData(true);
    proxy_->SetDisplayObserver([this](const std::string& recent, size_t connections) {
      window_.Post([this, recent, connections] {
        if (ui_) ui_->ShowStatus(recent, connections);
      });
    });
  });
}

void HostedProgram::ShowClient() {
  HWND client = FindWindowA("Outlook Express Browser Class", nullptr);
  if (client == nullptr) return;
  ShowWindow(client, IsIconic(client) ? SW_RESTORE : SW_SHOW);
  SetForegroundWindow(client);
}

void HostedProgram::OpenHelp() {
  const Settings& s = *store_.Current();
  const std::string file =
      programDir_ + (s.intLanguage == kLangPolish ? "\\OE_Brindle.chm" : "\\OE_Brindle_EN.chm");
  if (GetFileAttributesA(file.c_str()) == INVALID_FILE_ATTRIBUTES ||
      reinterpret_cast<INT_PTR>(ShellExecuteA(window_.Handle(), "open", file.c_str(), nullptr,
                                              nullptr, SW_SHOWNORMAL)) <= 32) {
    ShowMessageBox(std::string(LanguageString(s, 24)) + " " + file, MessageBoxTitle(s, 25),
                   BoxIcon::kExclamation);
  }
}

void HostedProgram::CloseTunnels() {
  // The windows go before the proxy they ask.
  window_.SetHandler({});
  ui_.reset();
  optionsWindow_.reset();
  bool closed = false;
  asio::post(io_, [&] {
    if (!proxy_) {
      window_.Post([&] { closed = true; });
      return;
    }
    // The companion is told to quit now: its end is no reason to start it again.
    keeper_->Stop();
    proxy_->CloseDown([&] {
      // Not from inside the proxy's own call: the proxy goes after it returns.
      asio::post(io_, [&] {
        keeper_.reset();
        companion_.reset();
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
  keeper_.reset();
  companion_.reset();
  services_.reset();
  proxy_.reset();  // the io thread has ended: nothing else touches it
}

}  // namespace brindle::app
