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
#include "app/companion_keeper.h"
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
#include "localnet/control_key.h"
#include "proxy/channel_timeouts.h"
#include "web/web_access.h"
#include "web/web_server.h"
#include "web/web_view.h"

namespace brindle::app {
namespace {

constexpr const char* kCompanionFile = "SslBridge";
// How long the companion gets to act on "QUIT" before it is told by signal.
constexpr std::chrono::seconds kCompanionGrace{2};

ProxyOptions MakeProxyOptions(const HeadlessConfig& config) {
  ProxyOptions options;
  options.companionControlPort = config.companionControlPort;
  options.companionKey = localnet::NewControlKey();
  options.timeouts = ChannelTimeoutsFromEnvironment();
  return options;
}

// Where the browser view listens unless told otherwise.
constexpr uint16_t kDefaultWebPort = 8119;

class HeadlessProgram {
 public:
  explicit HeadlessProgram(const HeadlessConfig& config)
      : config_(config),
        children_(io_),
        stopSignals_(io_),
        proxyOptions_(MakeProxyOptions(config)),
        proxy_(io_, store_, proxyOptions_),
        services_(io_, proxy_, store_, Hooks()),
        companionTimer_(io_),
        keeper_(io_, services_, proxy_, [this] { return LaunchCompanion(); }) {}

  int Run() {
    asio::post(io_, [this] {
      RunLoadSequence(services_, [this](std::optional<StartupReport> report) { Loaded(report); });
    });
    // A handler that throws loses its own work; the program goes on.
    for (;;) {
      try {
        io_.run();
        break;
      } catch (const std::exception& e) {
        log::Error(std::string("unexpected failure, carrying on: ") + e.what());
      }
    }
    return exitStatus_;
  }

 private:
  ProgramHooks Hooks() {
    ProgramHooks hooks;
    hooks.companionFileName = kCompanionFile;
    hooks.launchCompanion = [this] { return LaunchCompanion(); };
    hooks.defaultLanguage = [] { return UserLanguage(); };
    hooks.settingsPlaces = {config_.settingsDir, config_.programDir};
    hooks.stopLoading = config_.stopRequested;
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
    // The key goes to the companion alone: set for its start, then removed,
    // so that the client started later does not inherit it.
    setenv(localnet::kControlKeyVariable, proxyOptions_.companionKey.c_str(), 1);
    // Its own process group: a Ctrl-C meant for us must not end the companion
    // before the routes are withdrawn and QUIT is sent.
    Expected<pid_t> spawned = SpawnProcess(path, args, false, /*ownProcessGroup=*/true);
    unsetenv(localnet::kControlKeyVariable);
    if (!spawned.ok()) {
      log::Error(spawned.status().message());
      return false;
    }
    companion_ = *spawned;
    keeper_.Started();
    children_.Watch(companion_, [this](int status) {
      CompanionGone();
      if (!closing_) keeper_.Ended(status);
    });
    return true;
  }

  void Loaded(const std::optional<StartupReport>& report) {
    TakeStopSignals();
    if (!report) {  // the companion is missing; its box has been shown
      exitStatus_ = 1;
      Finish();
      return;
    }
    const std::string summary =
        StartupSummary(*report, kCompanionFile, config_.companionControlPort);
    std::fputs((summary + OpenWebView()).c_str(), stderr);
    std::fflush(stderr);
    if (config_.stopRequested && config_.stopRequested->load()) return ShutDown();
    if (!config_.client.empty()) StartClient();
  }

  // Added before the flag is looked at, so a signal is either seen in the
  // flag or arrives through the event loop.
  void TakeStopSignals() {
    stopSignals_.add(SIGINT);
    stopSignals_.add(SIGTERM);
    WaitForStopSignal();
  }

  void StartClient() {
    std::vector<std::string> args(config_.client.begin() + 1, config_.client.end());
    Expected<pid_t> spawned = SpawnProcess(config_.client.front(), args, true);
    if (!spawned.ok()) {
      log::Error("cannot start the client: " + spawned.status().message());
      exitStatus_ = 127;
      return ShutDown();
    }
    client_ = *spawned;
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
                  [](const Settings& settings) { return SaveSettings2Ini(settings).ok(); });
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
      ShutDown();
    });
  }

  void ShutDown() {
    if (closing_) return;
    closing_ = true;
    keeper_.Stop();
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
  ProxyOptions proxyOptions_;
  Proxy proxy_;
  ProgramServices services_;
  asio::steady_timer companionTimer_;
  CompanionKeeper keeper_;
  std::optional<web::AccessRules> access_;
  std::optional<web::WebView> view_;
  std::optional<web::WebServer> web_;
  pid_t companion_ = -1;
  pid_t client_ = -1;
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
