#include <syslog.h>

#include <mutex>
#include <string>

#include "core/event_log.h"

namespace brindle::event_log {
namespace {

void OpenOnce() {
  static std::once_flag once;
  std::call_once(once, [] { openlog(SourceName(), LOG_PID, LOG_USER); });
}

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
  return LOG_INFO;
}

// The system log takes one line per entry.
std::string OneLine(std::string_view text) {
  std::string line(text);
  for (char& c : line)
    if (c == '\r' || c == '\n') c = ' ';
  return line;
}

}  // namespace

void WriteSystemLog(log::Level level, std::string_view text) {
  OpenOnce();
  syslog(Priority(level), "%s", OneLine(text).c_str());
}

}  // namespace brindle::event_log
