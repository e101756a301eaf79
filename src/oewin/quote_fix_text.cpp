#include "oewin/quote_fix_text.h"

namespace brindle {

std::string ReplaceAll(std::string_view text, std::string_view from, std::string_view to) {
  if (from.empty()) return std::string(text);
  std::string out;
  out.reserve(text.size());
  size_t pos = 0;
  for (size_t hit = text.find(from); hit != std::string_view::npos; hit = text.find(from, pos)) {
    out.append(text.substr(pos, hit - pos));
    out.append(to);
    pos = hit + from.size();
  }
  out.append(text.substr(pos));
  return out;
}

std::vector<std::string_view> SplitCrLf(std::string_view text) {
  std::vector<std::string_view> lines;
  size_t pos = 0;
  for (size_t hit = text.find(kCrLf); hit != std::string_view::npos; hit = text.find(kCrLf, pos)) {
    lines.push_back(text.substr(pos, hit - pos));
    pos = hit + kCrLf.size();
  }
  lines.push_back(text.substr(pos));
  return lines;
}

namespace {
template <typename Lines>
std::string Join(const Lines& lines) {
  size_t total = 0;
  for (const auto& l : lines) total += l.size() + kCrLf.size();
  std::string out;
  out.reserve(total);
  for (size_t i = 0; i < lines.size(); ++i) {
    if (i > 0) out.append(kCrLf);
    out.append(lines[i]);
  }
  return out;
}
}  // namespace

std::string JoinCrLf(const std::vector<std::string_view>& lines) {
  return Join(lines);
}
std::string JoinCrLf(const std::vector<std::string>& lines) {
  return Join(lines);
}

std::string RemoveAllRepeatedly(std::string_view text, std::string_view what) {
  // A stack-like output: whenever its tail spells what, that tail goes, so
  // occurrences formed by an earlier removal are caught too.
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    out.push_back(c);
    if (!what.empty() && out.size() >= what.size() &&
        std::string_view(out).substr(out.size() - what.size()) == what) {
      out.resize(out.size() - what.size());
    }
  }
  return out;
}

}  // namespace brindle
