#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <optional>

#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/signal_set.hpp>
#include <asio/steady_timer.hpp>

#include "app/child_process.h"
#include "app/headless_program.h"
#include "app/instance_lock.h"
#include "app/milestones.h"
#include "app/program_services.h"
#include "app/settings_binding.h"
#include "app/startup_summary.h"
#include "core/log.h"
#include "core/message_box.h"
#include "core/settings_file.h"
#include "core/settings_paths.h"
#include "web/web_access.h"
#include "web/web_server.h"
#include "web/web_view.h"

namespace brindle::app {
namespace {

constexpr const char* kCompanionFile = "SslBridge";
// How long the companion gets to act on "QUIT" before it is told by signal.
constexpr std::chrono::seconds kCompanionGrace{2};
// Where the browser view listens unless told otherwise.
constexpr uint16_t kDefaultWebPort = 8119;

class HeadlessProgram {
 public:
  explicit HeadlessProgram(const HeadlessConfig& config)
      : config_(config),
        children_(io_),
        stopSignals_(io_, SIGINT, SIGTERM),
        proxy_(io_, store_, ProxyOptions{config.companionControlPort}),
        services_(io_, proxy_, store_, Hooks()),
        companionTimer_(io_) {}

  int Run() {
    WaitForStopSignal();
    asio::post(io_, [this] {
      RunLoadSequence(services_, [this](std::optional<StartupReport> report) { Loaded(report); });
    });
    io_.run();
    return exitStatus_;
  }

 private:
  ProgramHooks Hooks() {
    ProgramHooks hooks;
    hooks.companionFileName = kCompanionFile;
    hooks.launchCompanion = [this] { return LaunchCompanion(); };
    hooks.defaultLanguage = [] { return UserLanguage(); };
    hooks.loadSettings = [this](int16_t language, const ProgramHooks::ProgressSink& sink) {
      return FindSettings(config_.programDir, config_.settingsDir, language, sink);
    };
    return hooks;
  }

  bool LaunchCompanion() {
    const std::string path = config_.programDir + "/" + kCompanionFile;
    if (access(path.c_str(), X_OK) != 0) return false;
    std::vector<std::string> args;
    if (config_.companionPortMoved)
      args = {"--control-port", std::to_string(config_.companionControlPort)};
    // The companion reads its SslBridge.conf from the settings folder in use.
    ExportSettingsFolder(config_.settingsDir);
    std::string error;
    // Its own process group: a Ctrl-C meant for us must not end the companion
    // before the routes are withdrawn and QUIT is sent.
    companion_ = SpawnProcess(path, args, false, error, /*ownProcessGroup=*/true);
    if (companion_ < 0) {
      log::Error(error);
      return false;
    }
    children_.Watch(companion_, [this](int status) {
      if (!closing_) log::Warning("companion ended early, status " + std::to_string(status));
      CompanionGone();
    });
    return true;
  }

  void Loaded(const std::optional<StartupReport>& report) {
    if (!report) {  // the companion is missing; its box has been shown
      exitStatus_ = 1;
      Finish();
      return;
    }
    loaded_ = true;
    const std::string summary =
        StartupSummary(*report, kCompanionFile, config_.companionControlPort);
    std::fputs((summary + OpenWebView()).c_str(), stderr);
    std::fflush(stderr);
    if (stopRequested_) return ShutDown();
    if (!config_.client.empty()) StartClient();
  }

  void StartClient() {
    std::vector<std::string> args(config_.client.begin() + 1, config_.client.end());
    std::string error;
    client_ = SpawnProcess(config_.client.front(), args, true, error);
    if (client_ < 0) {
      log::Error("cannot start the client: " + error);
      exitStatus_ = 127;
      return ShutDown();
    }
    children_.Watch(client_, [this](int status) {
      client_ = -1;
      exitStatus_ = status;
      log::Info(milestone::kClientExited);
      ShutDown();
    });
  }

  // The browser view: a fresh secret in the settings folder, then the port.
  // Neither failing stops the tunnels; the summary says what happened.
  std::string OpenWebView() {
    const uint16_t port = config_.webPort.value_or(kDefaultWebPort);
    std::string error;
    access_.emplace(web::MakeSecret(), port);
    if (!web::SaveSecret(config_.settingsDir, access_->Secret(), error))
      return "browser view: off, the key cannot be kept: " + error + "\n";
    view_.emplace(io_, proxy_, store_, *access_,
                  [](const Settings& settings) { return SaveSettings2Ini(settings); });
    web_.emplace(io_, *view_, port);
    if (!web_->Open(error)) {
      web_.reset();
      return "browser view: off, 127.0.0.1:" + std::to_string(port) + " " + error + "\n";
    }
    return "browser view: http://127.0.0.1:" + std::to_string(port) + "/?key=" + access_->Secret() +
           "\n";
  }

  // The first SIGINT/SIGTERM ends the program; with a client it is handed to
  // the client instead, whose end then ends the program. A second signal
  // ends the program without waiting for the client.
  void WaitForStopSignal() {
    stopSignals_.async_wait([this](const std::error_code& ec, int signal) {
      if (ec) return;
      if (client_ > 0 && !signalForwarded_) {
        signalForwarded_ = true;
        kill(client_, signal);
        WaitForStopSignal();
        return;
      }
      if (!loaded_) {
        stopRequested_ = true;  // start-up finishes first, then shuts down
        WaitForStopSignal();
        return;
      }
      ShutDown();
    });
  }

  void ShutDown() {
    if (closing_) return;
    closing_ = true;
    if (web_) web_->Close();
    proxy_.CloseDown([this] {
      log::Info(milestone::kTunnelsClosed);
      AwaitCompanion();
    });
  }

  // The companion was told to quit; give it a moment, then insist.
  void AwaitCompanion() {
    if (!children_.Running(companion_)) return CompanionGone();
    companionTimer_.expires_after(kCompanionGrace);
    companionTimer_.async_wait([this](const std::error_code& ec) {
      if (ec || !children_.Running(companion_)) return;
      log::Warning("companion did not quit; terminating it");
      kill(companion_, SIGTERM);
      companionTimer_.expires_after(kCompanionGrace);
      companionTimer_.async_wait([this](const std::error_code& ec2) {
        if (!ec2 && children_.Running(companion_)) kill(companion_, SIGKILL);
      });
    });
  }

  void CompanionGone() {
    companion_ = -1;
    companionTimer_.cancel();
    if (closing_) Finish();
  }

  void Finish() {
    if (finished_) return;
    finished_ = true;
    if (closing_) log::Info(milestone::kUnloaded);
    io_.stop();
  }

  const HeadlessConfig& config_;
  asio::io_context io_;
  SettingsStore store_;
  ChildWatcher children_;
  asio::signal_set stopSignals_;
  Proxy proxy_;
  ProgramServices services_;
  asio::steady_timer companionTimer_;
  std::optional<web::AccessRules> access_;
  std::optional<web::WebView> view_;
  std::optional<web::WebServer> web_;
  pid_t companion_ = -1;
  pid_t client_ = -1;
  bool loaded_ = false;
  bool stopRequested_ = false;
  bool signalForwarded_ = false;
  bool closing_ = false;
  bool finished_ = false;
  int exitStatus_ = 0;
};

}  // namespace

int RunHeadless(const HeadlessConfig& config) {
  std::optional<InstanceLock> lock;
  std::string detail;
  switch (InstanceLock::Acquire(config.settingsDir, lock, detail)) {
    case InstanceLock::Result::kAcquired:
      break;
    case InstanceLock::Result::kHeldByAnother:
      log::Error("already running with the settings folder " + config.settingsDir);
      return 1;
    case InstanceLock::Result::kFailed:
      log::Error(detail);
      return 1;
  }
  HeadlessProgram program(config);
  return program.Run();
}

}  // namespace brindle::app
