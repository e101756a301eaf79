// Small byte-wise text tests of the protocol handling. Case folding is
// ASCII only: commands are ASCII, and message bytes are never folded.
#pragma once

#include <string_view>

namespace brindle {

inline char AsciiUpper(char c) {
  return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 32) : c;
}

inline bool StartsWithNoCase(std::string_view text, std::string_view prefix) {
  if (text.size() < prefix.size()) return false;
  for (size_t i = 0; i < prefix.size(); ++i) {
    if (AsciiUpper(text[i]) != AsciiUpper(prefix[i])) return false;
  }
  return true;
}

inline bool EqualsNoCase(std::string_view text, std::string_view other) {
  return text.size() == other.size() && StartsWithNoCase(text, other);
}

// A line without its line end (CR LF, or a bare LF).
inline std::string_view WithoutLineEnd(std::string_view line) {
  if (line.ends_with('\n')) line.remove_suffix(1);
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

// Is `line` the command `word`, alone or followed by a space and arguments?
inline bool IsCommand(std::string_view line, std::string_view word) {
  return StartsWithNoCase(line, word) && (line.size() == word.size() || line[word.size()] == ' ');
}

// The three-digit status code at the start of a reply line, or -1.
inline int StatusCode(std::string_view line) {
  if (line.size() < 3) return -1;
  int code = 0;
  for (size_t i = 0; i < 3; ++i) {
    if (line[i] < '0' || line[i] > '9') return -1;
    code = code * 10 + (line[i] - '0');
  }
  return code;
}

inline constexpr std::string_view kCrLf = "\r\n";
inline constexpr std::string_view kTerminator = "\r\n.\r\n";

}  // namespace brindle
