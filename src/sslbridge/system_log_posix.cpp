#include <syslog.h>

#include <cstdio>
#include <string>

#include "core/log.h"
#include "sslbridge/system_log.h"

namespace brindle::sslbridge {
namespace {

int Priority(log::Level level) {
  switch (level) {
    case log::Level::kDebug:
      return LOG_DEBUG;
    case log::Level::kInfo:
      return LOG_INFO;
    case log::Level::kWarning:
      return LOG_WARNING;
    case log::Level::kError:
      return LOG_ERR;
  }
  return LOG_NOTICE;
}

}  // namespace

void InstallSystemLog() {
  openlog("SslBridge", LOG_PID, LOG_USER);
  log::SetSink([](log::Level level, std::string_view message) {
    std::string text(message);
    std::fprintf(stderr, "SslBridge: %s: %s\n", log::LevelName(level), text.c_str());
    syslog(Priority(level), "%s", text.c_str());
  });
}

}  // namespace brindle::sslbridge
