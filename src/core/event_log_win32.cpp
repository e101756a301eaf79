#include <windows.h>

#include <mutex>
#include <string>

#include "core/event_log.h"

namespace brindle::event_log {
namespace {

HANDLE Source() {
  static HANDLE source = RegisterEventSourceA(nullptr, SourceName());
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

void WriteSystemLog(log::Level level, std::string_view text) {
  HANDLE source = Source();
  if (source == nullptr) return;
  std::string entry(text);
  const char* strings[] = {entry.c_str()};
  ReportEventA(source, EventType(level), 0, 0, nullptr, 1, 0, strings, nullptr);
}

}  // namespace brindle::event_log
