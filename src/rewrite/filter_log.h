// The filter log: one line for every downloaded message that a filter
// changed, so that the user can see why a message looks different. Lines are
// only ever appended; when the log would grow past its limit it is first
// renamed to the same name + ".1" (replacing the older one) and started anew.
//
// A line holds six fields separated by tabs, then CR LF:
//   local time, tunnel, Message-ID, sender mailbox, subject, changed steps
// for example
//   2026-11-23 15:40:02	NNTP 1119 news.example.org	<a1@example.org>	joe@spam.example	[SPAM]
//   Cheap	spammer list
// Tabs and control characters in a field become blanks; the subject is
// shortened to kLoggedSubject bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "rewrite/download_changes.h"

namespace brindle {

inline constexpr size_t kLoggedSubject = 80;
inline constexpr int64_t kFilterLogLimit = 1024 * 1024;

struct FilterLogEntry {
  std::string time;
  std::string tunnel;
  std::string messageId;
  std::string sender;
  std::string subject;
  DownloadChanges changes;
};

// The entry's line, with its CR LF.
std::string FilterLogLine(const FilterLogEntry& entry);
// A line as FilterLogLine writes it (its line end may be missing); nothing
// for a line of another shape.
std::optional<FilterLogEntry> ParseFilterLogLine(std::string_view line);

// Appends one line, rotating first when needed. False when it could not be
// written; the caller's message never waits for this.
bool AppendFilterLog(const std::string& path, std::string_view line,
                     int64_t limit = kFilterLogLimit);

// The last `count` lines (without line ends), oldest first, reaching into
// the rotated file when the log itself holds fewer.
std::vector<std::string> FilterLogTail(const std::string& path, size_t count);

}  // namespace brindle
