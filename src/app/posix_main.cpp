// brindle: the program on POSIX.
#include <signal.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "app/headless_program.h"
#include "app/options.h"
#include "app/settings_binding.h"
#include "core/event_log.h"
#include "core/log.h"
#include "core/message_box.h"

namespace {

std::atomic<bool> stopRequested{false};
static_assert(std::atomic<bool>::is_always_lock_free, "set from a signal handler");

extern "C" void NoteStop(int) {
  stopRequested.store(true);
}

// A stop asked for while start-up reads the settings ends the reading at
// once instead of after the whole file; the program then shuts down.
void NoteStopSignals() {
  struct sigaction action {};
  action.sa_handler = NoteStop;
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

}  // namespace

int main(int argc, char** argv) {
  using namespace brindle;
  const app::Options options = app::ParseOptions(argc, argv);
  if (!options.error.empty()) {
    std::fprintf(stderr, "brindle: %s\n%s", options.error.c_str(),
                 app::UsageText("brindle").c_str());
    return 2;
  }
  if (options.help) {
    std::fputs(app::UsageText("brindle").c_str(), stdout);
    return 0;
  }
  if (options.version) {
    std::printf("OE Brindle %s\n", BRINDLE_VERSION);
    return 0;
  }
  const auto port = app::CompanionPortOverride(std::getenv("BRINDLE_COMPANION_PORT"));
  const auto webPort = app::PortOverride("BRINDLE_WEB_PORT", std::getenv("BRINDLE_WEB_PORT"));
  for (const Status& status : {port.status(), webPort.status()}) {
    if (status.ok()) continue;
    std::fprintf(stderr, "brindle: %s\n", status.message().c_str());
    return 2;
  }

  std::string levelError;
  const auto level = app::LogLevelOverride(std::getenv("BRINDLE_LOG_LEVEL"), levelError);
  if (!levelError.empty()) {
    std::fprintf(stderr, "brindle: %s\n", levelError.c_str());
    return 2;
  }
  if (level) log::SetMinimumLevel(*level);

  log::SetSink(event_log::SystemLogSink(true));
  SetMessageBoxSink(PlatformMessageBoxPresenter());
  signal(SIGPIPE, SIG_IGN);  // a peer gone mid-write is an error value, not the end
  NoteStopSignals();

  app::HeadlessConfig config;
  config.programDir = app::ProgramFolder();
  config.settingsDir = options.settingsDir ? *options.settingsDir : app::DefaultSettingsFolder();
  config.client = options.client;
  config.stopRequested = &stopRequested;
  config.webPort = *webPort;
  if (*port) {
    config.companionControlPort = **port;
    config.companionPortMoved = true;
  }
  return app::RunHeadless(config);
}
