// Check of uuencoded blocks in downloaded articles.
#include <new>
#include <string_view>
#include <vector>

#include "core/log.h"
#include "fast_find.h"
#include "incoming_filters.h"
#include "uuencode_end_lines.h"

namespace brindle {

namespace {

constexpr std::string_view kBegin = "begin ";
constexpr size_t kBlankOffset = 7;  // "\r\nbegin" then the blank
constexpr size_t kModeOffset = 8;   // three octal digits of the file mode
constexpr char kNoBreakSpace = static_cast<char>(160);

// One pass over the text: every "begin " after a line end, as positions of
// the line end's carriage return. Some servers hand out a begin line after a
// doubled carriage return; that is taken for a line end, and corrected in the
// text before anything else looks at it (it can complete an end line). The
// doubled form cannot overlap itself, so correcting as the pass goes gives
// the same text as replacing every occurrence of the original.
std::vector<size_t> FindBeginLines(std::string& text) {
  std::vector<size_t> lines;
  for (size_t at = FastFind(text, kBegin, 2); at != std::string::npos;
       at = FastFind(text, kBegin, at + kBegin.size())) {
    if (text[at - 2] != '\r') continue;
    if (text[at - 1] == '\r') text[at - 1] = '\n';
    if (text[at - 1] == '\n') lines.push_back(at - 2);
  }
  return lines;
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

// A begin line is broken when its mode is short, or when it is octal and no
// end line follows; an octal one with an end line moves `endLine` there.
bool IsBroken(std::string_view text, size_t p, UuencodeEndLines& endLines, size_t& endLine) {
  switch (ClassifyMode(text, p + kModeOffset)) {
    case ModeKind::kOctal: {
      const size_t found = endLines.FindFrom(p + 1);
      if (found == std::string::npos) return true;
      endLine = found;
      return false;
    }
    case ModeKind::kShort:
      return true;
    case ModeKind::kNoMode:
      return false;
  }
  return false;
}

}  // namespace

std::string FilterBegin(std::string&& text) {
  std::vector<size_t> beginLines;
  try {
    beginLines = FindBeginLines(text);
  } catch (const std::bad_alloc&) {
    // Only line ends have changed so far; the blocks go unchecked.
    log::Warning("Uuencode check: out of memory, begin lines left unchecked");
    return text;
  }
  UuencodeEndLines endLines(text);
  size_t start = 0;
  size_t endLine = 0;  // kept across begin lines: only a later end line moves `start`
  for (const size_t p : beginLines) {
    if (p < start) continue;
    // The client no longer sees "begin " and does not decode an unterminated block.
    if (IsBroken(text, p, endLines, endLine)) text[p + kBlankOffset] = kNoBreakSpace;
    // Behind a well-formed block, carry on after its end line: begin lines
    // inside the block are part of its data.
    start = endLine > p ? endLine : p + 1;
  }
  return text;
}

}  // namespace brindle
