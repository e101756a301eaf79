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

inline constexpr std::string_view kCrLf = "\r\n";
inline constexpr std::string_view kTerminator = "\r\n.\r\n";

}  // namespace brindle
