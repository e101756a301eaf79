// Check of uuencoded blocks in downloaded articles.
#include <string_view>

#include "incoming_filters.h"
#include "uuencode_end_lines.h"

namespace brindle {

namespace {

constexpr std::string_view kDoubledCrBegin = "\r\rbegin ";
constexpr std::string_view kBeginLine = "\r\nbegin ";
constexpr size_t kBlankOffset = 7;  // "\r\nbegin" then the blank
constexpr size_t kModeOffset = 8;   // three octal digits of the file mode
constexpr char kNoBreakSpace = static_cast<char>(160);

// Some servers hand out a begin line after a doubled carriage return; that is
// taken for a line end. The pattern cannot overlap itself, so one
// left-to-right pass over the original text gives every occurrence.
void FixDoubledCarriageReturns(std::string& text) {
  for (size_t at = text.find(kDoubledCrBegin); at != std::string::npos;
       at = text.find(kDoubledCrBegin, at + kDoubledCrBegin.size())) {
    text[at + 1] = '\n';
  }
}

enum class ModeKind { kOctal, kShort, kNoMode };

// Three octal digits make a begin line; a blank before the third digit makes
// a broken one; anything else (a letter, the end of the text) is no begin
// line at all.
ModeKind ClassifyMode(std::string_view text, size_t modeAt) {
  for (size_t i = 0; i < 3; ++i) {
    if (modeAt + i >= text.size()) return ModeKind::kNoMode;
    const char c = text[modeAt + i];
    if (c >= '0' && c <= '7') continue;
    return c == ' ' ? ModeKind::kShort : ModeKind::kNoMode;
  }
  return ModeKind::kOctal;
}

}  // namespace

std::string FilterBegin(std::string text) {
  FixDoubledCarriageReturns(text);
  UuencodeEndLines endLines(text);
  size_t start = 0;
  size_t endLine = 0;  // kept across begin lines: only a later end line moves `start`
  for (size_t p = text.find(kBeginLine); p != std::string::npos; p = text.find(kBeginLine, start)) {
    bool broken = false;
    switch (ClassifyMode(text, p + kModeOffset)) {
      case ModeKind::kOctal: {
        const size_t found = endLines.FindFrom(p + 1);
        if (found == std::string::npos) {
          broken = true;
        } else {
          endLine = found;
        }
        break;
      }
      case ModeKind::kShort:
        broken = true;
        break;
      case ModeKind::kNoMode:
        break;
    }
    // The client no longer sees "begin " and does not decode an unterminated block.
    if (broken) text[p + kBlankOffset] = kNoBreakSpace;
    // Behind a well-formed block, carry on after its end line: begin lines
    // inside the block are part of its data.
    start = endLine > p ? endLine : p + 1;
  }
  return text;
}

}  // namespace brindle
