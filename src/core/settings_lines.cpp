#include "core/settings_lines.h"

namespace brindle {

int32_t CountLines(std::string_view text) {
  int32_t count = 1;
  for (size_t at = text.find("\r\n"); at != std::string_view::npos;
       at = text.find("\r\n", at + 2)) {
    ++count;
  }
  return count;
}

std::string ini::CrLfLineEnds(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  LineReader lines(text);
  while (!lines.AtEnd()) {
    out.append(lines.Next());
    if (!lines.AtEnd() || text.back() == '\r' || text.back() == '\n') out.append("\r\n");
  }
  return out;
}

std::string_view ini::LineReader::Next() {
  size_t start = pos_;
  size_t end = bytes_.find_first_of("\r\n", start);
  if (end == std::string_view::npos) {
    pos_ = bytes_.size();
    return bytes_.substr(start);
  }
  pos_ = end + 1;
  if (bytes_[end] == '\r' && pos_ < bytes_.size() && bytes_[pos_] == '\n') ++pos_;
  return bytes_.substr(start, end - start);
}

}  // namespace brindle
