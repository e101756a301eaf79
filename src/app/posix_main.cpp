// brindle: the program on POSIX.
#include <signal.h>

#include <cstdio>
#include <cstdlib>

#include "app/headless_program.h"
#include "app/options.h"
#include "app/settings_binding.h"
#include "core/event_log.h"
#include "core/log.h"
#include "core/message_box.h"

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
  std::string portError;
  const auto port = app::CompanionPortOverride(std::getenv("BRINDLE_COMPANION_PORT"), portError);
  const auto webPort =
      app::PortOverride("BRINDLE_WEB_PORT", std::getenv("BRINDLE_WEB_PORT"), portError);
  if (!portError.empty()) {
    std::fprintf(stderr, "brindle: %s\n", portError.c_str());
    return 2;
  }

  log::SetSink(event_log::SystemLogSink(true));
  SetMessageBoxSink(PlatformMessageBoxPresenter());
  signal(SIGPIPE, SIG_IGN);  // a peer gone mid-write is an error value, not the end

  app::HeadlessConfig config;
  config.programDir = app::ProgramFolder();
  config.settingsDir = options.settingsDir ? *options.settingsDir : app::DefaultSettingsFolder();
  config.client = options.client;
  config.webPort = webPort;
  if (port) {
    config.companionControlPort = *port;
    config.companionPortMoved = true;
  }
  return app::RunHeadless(config);
}
