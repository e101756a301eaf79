// The operating system's own log as a sink for the program's log: the
// system log on POSIX (ident "OE Brindle"), the application event log on
// Windows (source "OE Brindle"). Start and stop milestones end up there as
// single plain-text entries.
#pragma once

#include <string_view>

#include "core/log.h"

namespace brindle::event_log {

inline constexpr const char* kSourceName = "OE Brindle";

// The name entries are filed under (and that prefixes them on standard
// error); kSourceName unless a program of the family, such as the TLS
// companion, names itself before its first entry. `ident` must live for the
// whole run (a literal).
void SetSourceName(const char* ident);
const char* SourceName();

// Each entry goes to the system log and, when `alsoStandardError`, to
// standard error as one line.
log::Sink SystemLogSink(bool alsoStandardError);

// One entry straight to the system log, bypassing the log seam (for the
// message-box presenter, whose boxes are not log entries).
void WriteSystemLog(log::Level level, std::string_view text);

}  // namespace brindle::event_log
