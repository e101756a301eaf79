#include <windows.h>

#include <cstdio>
#include <mutex>
#include <string>

#include "core/event_log.h"

namespace brindle::event_log {
namespace {

const char* g_sourceName = kSourceName;

HANDLE Source() {
  static HANDLE source = RegisterEventSourceA(nullptr, g_sourceName);
  return source;
}

WORD EventType(log::Level level) {
  switch (level) {
    case log::Level::kWarning:
      return EVENTLOG_WARNING_TYPE;
    case log::Level::kError:
      return EVENTLOG_ERROR_TYPE;
    default:
      return EVENTLOG_INFORMATION_TYPE;
  }
}

}  // namespace

void SetSourceName(const char* ident) {
  g_sourceName = ident;
}
const char* SourceName() {
  return g_sourceName;
}

void WriteSystemLog(log::Level level, std::string_view text) {
  HANDLE source = Source();
  if (source == nullptr) return;
  std::string entry(text);
  const char* strings[] = {entry.c_str()};
  ReportEventA(source, EventType(level), 0, 0, nullptr, 1, 0, strings, nullptr);
}

log::Sink SystemLogSink(bool alsoStandardError) {
  return [alsoStandardError](log::Level level, std::string_view message) {
    WriteSystemLog(level, message);
    if (alsoStandardError)
      std::fprintf(stderr, "%s: %s: %.*s\n", g_sourceName, log::LevelName(level),
                   static_cast<int>(message.size()), message.data());
  };
}

}  // namespace brindle::event_log
