// The file operations of the spammer list and the filter log that the
// settings file does not need already, on byte-string paths in the system's
// code page (never converted).
#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>

namespace brindle::datafile {

// Enough of a file's state to tell that it changed: written, resized or
// replaced by another file of the same name. `regular` is false for a
// folder, a pipe or a device at the path: something there, but nothing to
// read as a file (a pipe would even hold the reader up for ever).
struct FileStamp {
  int64_t modified = 0;
  int64_t size = 0;
  uint64_t identity = 0;
  bool regular = true;
  bool operator==(const FileStamp&) const = default;
};

// Nothing when nothing is at the path.
std::optional<FileStamp> Stamp(const std::string& path);

// Adds bytes at the end, creating the file when it does not exist.
bool Append(const std::string& path, std::string_view bytes);

// Renames `from` to `to`, replacing `to` when it exists.
bool MoveOver(const std::string& from, const std::string& to);

// "YYYY-MM-DD HH:MM:SS" in the user's local time.
std::string LocalTimeText(std::time_t when);

}  // namespace brindle::datafile
