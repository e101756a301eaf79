// Byte-wise text helpers shared by the settings file, the protocols, the
// rewriting steps and the tools. Texts are bytes of the system's single-byte
// code page: case folding touches the ASCII letters only (commands, keys and
// header names are ASCII; message bytes of 128 and up are never folded).
#pragma once

#include <cstddef>
#include <string_view>

namespace brindle {

inline constexpr std::string_view kCrLf = "\r\n";
// The line that ends a multi-line answer or message: a lone "." after a line end.
inline constexpr std::string_view kTerminator = "\r\n.\r\n";

inline constexpr char AsciiLower(char c) {
  return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

inline bool StartsWithNoCase(std::string_view text, std::string_view prefix) {
  if (text.size() < prefix.size()) return false;
  for (size_t i = 0; i < prefix.size(); ++i) {
    if (AsciiLower(text[i]) != AsciiLower(prefix[i])) return false;
  }
  return true;
}

inline bool EqualsNoCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && StartsWithNoCase(a, b);
}

// `text` without the `blanks` it starts and ends with.
inline std::string_view Trimmed(std::string_view text, std::string_view blanks = " \t") {
  const size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
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

// First occurrence of needle at or after from, ASCII letters compared without
// regard to case; std::string_view::npos when there is none.
size_t FindNoCase(std::string_view text, std::string_view needle, size_t from = 0);

// The decimal number a value starts with, as the settings file and the
// shift boxes read numbers: blanks before it, a sign, digits, a fraction and
// an exponent ("12", "-3", "+2.5", ".5", "1e3"); whatever follows is
// ignored, and a text that does not start with a number is 0. A number too
// large for a double is an infinity of its sign.
double LeadingNumber(std::string_view text);

}  // namespace brindle
