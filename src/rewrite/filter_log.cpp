#include "rewrite/filter_log.h"

#include <algorithm>

#include "core/settings_files.h"
#include "rewrite/data_files.h"

namespace brindle {
namespace {

constexpr size_t kFields = 6;

std::string Field(std::string_view value) {
  std::string out(value);
  std::replace_if(
      out.begin(), out.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }, ' ');
  return out;
}

std::string Shortened(std::string_view subject) {
  if (subject.size() <= kLoggedSubject) return Field(subject);
  size_t cut = kLoggedSubject;
  // Not inside a UTF-8 sequence; harmless for single-byte code pages.
  while (cut > 0 && (static_cast<unsigned char>(subject[cut]) & 0xC0) == 0x80) --cut;
  return Field(subject.substr(0, cut)) + "...";
}

// Splits bytes into lines without their line ends, oldest first.
std::vector<std::string> Lines(std::string_view bytes) {
  std::vector<std::string> lines;
  while (!bytes.empty()) {
    const size_t end = bytes.find('\n');
    std::string_view line = bytes.substr(0, end);
    if (line.ends_with('\r')) line.remove_suffix(1);
    lines.emplace_back(line);
    bytes = end == std::string_view::npos ? std::string_view() : bytes.substr(end + 1);
  }
  return lines;
}

}  // namespace

std::string FilterLogLine(const FilterLogEntry& e) {
  std::string line = Field(e.time);
  for (const std::string& field :
       {Field(e.tunnel), Field(e.messageId), Field(e.sender), Shortened(e.subject)}) {
    line += '\t';
    line += field;
  }
  line += '\t';
  line += e.changes.Names();
  line += "\r\n";
  return line;
}

std::optional<FilterLogEntry> ParseFilterLogLine(std::string_view line) {
  while (line.ends_with('\n') || line.ends_with('\r')) line.remove_suffix(1);
  std::vector<std::string_view> fields;
  for (;;) {
    const size_t tab = line.find('\t');
    fields.push_back(line.substr(0, tab));
    if (tab == std::string_view::npos) break;
    line.remove_prefix(tab + 1);
  }
  if (fields.size() != kFields) return std::nullopt;
  FilterLogEntry e{std::string(fields[0]), std::string(fields[1]),
                   std::string(fields[2]), std::string(fields[3]),
                   std::string(fields[4]), DownloadChanges::FromNames(fields[5])};
  if (!e.changes.Any()) return std::nullopt;
  return e;
}

bool AppendFilterLog(const std::string& path, std::string_view line, int64_t limit) {
  const auto stamp = datafile::Stamp(path);
  if (stamp && stamp->regular && stamp->size > 0 &&
      stamp->size + static_cast<int64_t>(line.size()) > limit) {
    // A failed rotation still appends: one line too many beats one lost.
    datafile::MoveOver(path, path + ".1");
  }
  return datafile::Append(path, line);
}

std::vector<std::string> FilterLogTail(const std::string& path, size_t count) {
  std::vector<std::string> lines = Lines(ini::ReadFileBytes(path).value_or(""));
  if (lines.size() < count) {
    std::vector<std::string> older = Lines(ini::ReadFileBytes(path + ".1").value_or(""));
    const size_t wanted = std::min(older.size(), count - lines.size());
    lines.insert(lines.begin(), older.end() - static_cast<std::ptrdiff_t>(wanted), older.end());
  }
  if (lines.size() > count)
    lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(count));
  return lines;
}

}  // namespace brindle
