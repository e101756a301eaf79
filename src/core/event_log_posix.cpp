#include <syslog.h>

#include <cstdio>
#include <mutex>
#include <string>

#include "core/event_log.h"

namespace brindle::event_log {
namespace {

const char* g_sourceName = kSourceName;

void OpenOnce() {
  static std::once_flag once;
  std::call_once(once, [] { openlog(g_sourceName, LOG_PID, LOG_USER); });
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

void SetSourceName(const char* ident) {
  g_sourceName = ident;
}
const char* SourceName() {
  return g_sourceName;
}

void WriteSystemLog(log::Level level, std::string_view text) {
  OpenOnce();
  syslog(Priority(level), "%s", OneLine(text).c_str());
}

log::Sink SystemLogSink(bool alsoStandardError) {
  return [alsoStandardError](log::Level level, std::string_view message) {
    WriteSystemLog(level, message);
    if (!alsoStandardError) return;
    if (level == log::Level::kInfo)
      std::fprintf(stderr, "%s: %.*s\n", g_sourceName, static_cast<int>(message.size()),
                   message.data());
    else
      std::fprintf(stderr, "%s: %s: %.*s\n", g_sourceName, log::LevelName(level),
                   static_cast<int>(message.size()), message.data());
  };
}

}  // namespace brindle::event_log
