#include "oewin/rewrap.h"

#include <algorithm>
#include <vector>

#include "oewin/quote_fix_text.h"
#include "oewin/quote_prefix.h"

namespace brindle {
namespace {

struct Line {
  std::string_view whole;
  std::string_view prefix;  // quote marks and the one space after them
  std::string_view body;    // empty for a blank or prefix-only line
  int level = 0;            // 0: not quoted
};

Line ParseLine(std::string_view text) {
  Line line;
  line.whole = text;
  const QuotePrefix p = FindQuotePrefix(text);
  line.level = p.level;
  if (p.level == 0) return line;
  size_t cut = p.length;
  if (!p.wholeLine && cut < text.size() && text[cut] == ' ') ++cut;
  line.prefix = text.substr(0, cut);
  if (!p.wholeLine) line.body = text.substr(cut);
  return line;
}

size_t TrimmedSize(std::string_view s) {
  size_t n = s.size();
  while (n > 0 && (s[n - 1] == ' ' || s[n - 1] == '\t')) --n;
  return n;
}

bool IsSignatureDelimiter(std::string_view body) {
  return body == "-- " || body == "--";
}

bool IsListItem(std::string_view body) {
  if (body.size() >= 2 && (body[0] == '-' || body[0] == '*' || body[0] == '+') && body[1] == ' ')
    return true;
  size_t digits = 0;
  while (digits < body.size() && digits < 4 && body[digits] >= '0' && body[digits] <= '9') ++digits;
  return digits > 0 && digits + 1 < body.size() && (body[digits] == '.' || body[digits] == ')') &&
         body[digits + 1] == ' ';
}

bool IsIndented(std::string_view body) {
  return !body.empty() && (body[0] == ' ' || body[0] == '\t');
}

size_t FirstWordSize(std::string_view body) {
  const size_t space = body.find(' ');
  return space == std::string_view::npos ? body.size() : space;
}

bool Joinable(const Line& prev, const Line& cur, size_t width) {
  if (prev.level == 0 || cur.level != prev.level) return false;
  if (prev.body.empty() || cur.body.empty()) return false;
  if (IsSignatureDelimiter(prev.body) || IsSignatureDelimiter(cur.body)) return false;
  if (IsListItem(cur.body) || IsIndented(cur.body)) return false;
  const bool wordWouldHaveFitted = TrimmedSize(prev.whole) + 1 + FirstWordSize(cur.body) <= width;
  return !wordWouldHaveFitted;
}

// Greedy fill of the words of lines [from, to) behind one prefix.
void Reflow(const std::vector<Line>& lines, size_t from, size_t to, size_t width,
            std::vector<std::string>& out) {
  const std::string_view prefix = lines[from].prefix;
  std::string current(prefix);
  bool empty = true;
  for (size_t i = from; i < to; ++i) {
    std::string_view body = lines[i].body;
    size_t pos = 0;
    while (pos < body.size()) {
      if (body[pos] == ' ') {
        ++pos;
        continue;
      }
      const size_t end = std::min(body.find(' ', pos), body.size());
      const std::string_view word = body.substr(pos, end - pos);
      pos = end;
      if (!empty && current.size() + 1 + word.size() > width) {
        out.push_back(std::move(current));
        current.assign(prefix);
        empty = true;
      }
      if (!empty) current += ' ';
      current.append(word);
      empty = false;
    }
  }
  if (!empty) out.push_back(std::move(current));
}

}  // namespace

std::string Rewrap(std::string_view text, int width) {
  if (width <= 0) return std::string(text);
  const size_t w = static_cast<size_t>(width);
  std::vector<Line> lines;
  for (std::string_view l : SplitCrLf(text)) lines.push_back(ParseLine(l));

  std::vector<std::string> out;
  out.reserve(lines.size());
  size_t start = 0;
  while (start < lines.size()) {
    size_t end = start + 1;
    while (end < lines.size() && Joinable(lines[end - 1], lines[end], w)) ++end;
    size_t firstLong = start;
    while (firstLong < end && lines[firstLong].whole.size() <= w) ++firstLong;
    // Unquoted lines and prefix-only lines are never re-flowed.
    if (lines[start].level == 0 || lines[start].body.empty()) firstLong = end;
    for (size_t i = start; i < firstLong; ++i) out.emplace_back(lines[i].whole);
    if (firstLong < end) Reflow(lines, firstLong, end, w, out);
    start = end;
  }
  return JoinCrLf(out);
}

}  // namespace brindle
