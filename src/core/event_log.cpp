// The parts of the system-log sink that do not depend on the platform: the
// name entries are filed under, and the echo on standard error. Only
// WriteSystemLog differs (syslog on POSIX, the event log on Windows).
#include "core/event_log.h"

#include <cstdio>

namespace brindle::event_log {
namespace {

const char* g_sourceName = kSourceName;

}  // namespace

void SetSourceName(const char* ident) {
  g_sourceName = ident;
}

const char* SourceName() {
  return g_sourceName;
}

log::Sink SystemLogSink(bool alsoStandardError) {
  return [alsoStandardError](log::Level level, std::string_view message) {
    WriteSystemLog(level, message);
    if (!alsoStandardError) return;
    // Milestones read as plain lines; anything else says what it is.
    if (level == log::Level::kInfo)
      std::fprintf(stderr, "%s: %.*s\n", g_sourceName, static_cast<int>(message.size()),
                   message.data());
    else
      std::fprintf(stderr, "%s: %s: %.*s\n", g_sourceName, log::LevelName(level),
                   static_cast<int>(message.size()), message.data());
  };
}

}  // namespace brindle::event_log
