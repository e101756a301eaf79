// Finder of the end lines of uuencoded blocks in one downloaded article.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace brindle {

// The last data line of a block (a grave accent, a blank or nothing) and the
// "end" line, in the order they are tried: the first form found anywhere
// after the begin line wins, even when another form comes earlier.
inline constexpr std::array<std::string_view, 3> kUuencodeEndLines = {
    "\r\n`\r\nend\r\n", "\r\n \r\nend\r\n", "\r\n\r\nend\r\n"};

// Answers FindFrom for starting points that never decrease. Each form
// remembers its last hit, so an article with many begin lines sharing one
// far-away end line (or having none) is still scanned once per form, not
// once per begin line. The text must outlive the finder, and changes to it
// must not create or destroy end lines (disarming a begin line does neither).
class UuencodeEndLines {
 public:
  explicit UuencodeEndLines(std::string_view text) : text_(text) {}

  // Position of the first form (in the order above) that occurs at or after
  // `from`; npos when none does.
  size_t FindFrom(size_t from);

 private:
  size_t NextOf(size_t form, size_t from);

  std::string_view text_;
  std::array<bool, 3> searched_{};
  std::array<size_t, 3> hit_{};  // first occurrence at or after an earlier start, or npos
};

}  // namespace brindle
