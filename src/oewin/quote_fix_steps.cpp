#include "oewin/quote_fix_steps.h"

#include <vector>

#include "oewin/quote_fix_text.h"

namespace brindle {

bool IsAlreadyQuoted(std::string_view text, size_t from) {
  for (size_t crlf = text.find(kCrLf, from); crlf != std::string_view::npos;
       crlf = text.find(kCrLf, crlf + kCrLf.size())) {
    const size_t next = crlf + kCrLf.size();
    if (next >= text.size() || text[next] != '>') return false;
  }
  return true;
}

std::string RemoveQuotedSignature(std::string_view quoted) {
  size_t at = quoted.rfind("\r\n> -- \r\n");
  if (at == std::string_view::npos) at = quoted.rfind("\r\n> --\r\n");
  if (at == std::string_view::npos) return std::string(quoted);
  return std::string(quoted.substr(0, at));
}

std::string DropQuotedBlanksBeforeEmptyLines(std::string_view quoted) {
  const std::vector<std::string_view> lines = SplitCrLf(quoted);
  std::vector<bool> keep(lines.size(), true);
  // Walking backwards, "followed by an empty line" looks at the next line
  // that is kept, so a removal lets the "> " line above it go as well.
  bool nextKeptIsEmptyLine = false;
  for (size_t i = lines.size(); i-- > 0;) {
    if (i > 0 && nextKeptIsEmptyLine && lines[i] == "> ") {
      keep[i] = false;
      continue;
    }
    nextKeptIsEmptyLine = lines[i].empty() && i + 1 < lines.size();
  }
  std::vector<std::string_view> kept;
  kept.reserve(lines.size());
  for (size_t i = 0; i < lines.size(); ++i) {
    if (keep[i]) kept.push_back(lines[i]);
  }
  return JoinCrLf(kept);
}

std::string CompressVertically(std::string_view quoted) {
  std::string out;
  out.reserve(quoted.size());
  for (std::string_view line : SplitCrLf(quoted)) {
    if (line.find_first_not_of(" >|:") == std::string_view::npos) continue;
    out.append(line);
    out.append(kCrLf);
  }
  if (out.size() >= 2) out.resize(out.size() - 2);
  return out;
}

}  // namespace brindle
