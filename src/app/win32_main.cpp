// brindle.exe: started instead of the client, it hosts the client.
#include <windows.h>

#include <cstdlib>

#include "app/entry_procedure.h"
#include "app/hosted_program.h"
#include "app/options.h"
#include "app/settings_binding.h"
#include "app/win32_system.h"
#include "core/event_log.h"
#include "core/log.h"
#include "core/message_box.h"
#include "localnet/control_key.h"

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR commandLine, int showState) {
  using namespace brindle;
  log::SetSink(event_log::SystemLogSink(false));
  SetMessageBoxSink(PlatformMessageBoxPresenter());

  std::string levelError;
  if (const auto level = app::LogLevelOverride(std::getenv("BRINDLE_LOG_LEVEL"), levelError))
    log::SetMinimumLevel(*level);

  ProxyOptions options;
  const auto port = app::CompanionPortOverride(std::getenv("BRINDLE_COMPANION_PORT"));
  if (!port.ok()) {
    log::Warning(port.status().message() + "; the companion keeps its own port");
  } else if (*port) {
    options.companionControlPort = **port;
  }
  options.companionKey = localnet::NewControlKey();
  options.timeouts = ChannelTimeoutsFromEnvironment();

  const std::string programDir = app::ProgramFolder();
  app::Win32System system(programDir);
  app::HostedProgram form(system, programDir, app::DefaultSettingsFolder(), options);
  app::EntryArguments arguments;
  arguments.commandLine = commandLine != nullptr ? commandLine : "";
  arguments.showState = static_cast<int16_t>(showState);
  return app::RunEntryProcedure(system, form, arguments);
}
