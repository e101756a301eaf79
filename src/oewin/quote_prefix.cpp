#include "oewin/quote_prefix.h"

#include "oewin/quote_fix_text.h"

namespace brindle {
namespace {

bool IsQuoteMark(char c) {
  return c == '>' || c == '|' || c == ':';
}
bool IsPrefixChar(char c) {
  return c == ' ' || IsQuoteMark(c);
}

}  // namespace

QuotePrefix FindQuotePrefix(std::string_view line) {
  size_t run = 0;
  while (run < line.size() && IsPrefixChar(line[run])) ++run;

  QuotePrefix prefix;
  prefix.wholeLine = run == line.size();
  size_t end = run;
  if (!prefix.wholeLine && end > 0 && (line[end - 1] == ':' || line[end - 1] == '|')) --end;
  const size_t indent = line.find("  ");
  if (indent != std::string_view::npos && indent < end) end = indent;

  prefix.length = end;
  for (size_t i = 0; i < end; ++i) {
    if (IsQuoteMark(line[i])) ++prefix.level;
  }
  return prefix;
}

std::string MakeQuotePrefix(int level, bool horizontalCompression) {
  if (level <= 0) return {};
  if (horizontalCompression) return std::string(static_cast<size_t>(level), '>') + ' ';
  std::string out;
  out.reserve(static_cast<size_t>(level) * 2);
  for (int i = 0; i < level; ++i) out += "> ";
  return out;
}

std::string NormaliseQuotePrefixes(std::string_view text, bool horizontalCompression) {
  std::vector<std::string> out;
  for (std::string_view line : SplitCrLf(text)) {
    const QuotePrefix prefix = FindQuotePrefix(line);
    if (prefix.length == 0) {
      out.emplace_back(line);
      continue;
    }
    std::string fixed = MakeQuotePrefix(prefix.level, horizontalCompression);
    if (!prefix.wholeLine) fixed.append(line.substr(prefix.length));
    out.push_back(std::move(fixed));
  }
  return JoinCrLf(out);
}

}  // namespace brindle
