#include <optional>
#include <string_view>

#include "core/log.h"
#include "rewrite/outgoing_headers.h"

namespace brindle {
namespace {

// The shortened line, or nothing when the line cannot be brought down to
// `limit` by dropping ids after the first one.
//
// Each pass of the shortening keeps everything up to the first '>' plus the
// separator after it, adds one blank, and continues after the next '>' of
// the line as it then stands. Since the kept prefix never changes, pass k
// continues after the k-th '>' that follows the first id in the original
// line, so the outcome of all passes can be read off the original line in a
// single walk over its ids instead of one rebuild per dropped id.
std::optional<std::string> ShortenReferencesLine(std::string_view line, long limit) {
  if (static_cast<long>(line.size()) <= limit) return std::string(line);
  size_t firstClose = line.find('>');
  if (firstClose == std::string_view::npos) return std::nullopt;
  const size_t keep = firstClose + 2;  // the first id and the separator after it
  size_t close = line.find('>', firstClose + 1);
  // A '>' right after the first one would be found again on every pass,
  // and the line would grow by a blank each time.
  if (close == firstClose + 1) return std::nullopt;
  while (close != std::string_view::npos) {
    long length = static_cast<long>(keep + 1 + (line.size() - close - 1));
    if (length <= limit) {
      std::string result(line.substr(0, keep));
      result += ' ';
      result.append(line.substr(close + 1));
      return result;
    }
    close = line.find('>', close + 1);
  }
  // Out of ids while still too long: the next pass would grow the line.
  return std::nullopt;
}

}  // namespace

std::string CutReferences(std::string&& text, int limit) {
  // Only a References header at the start of a line counts.
  size_t lineBreak = text.find("\r\nReferences: ");
  if (lineBreak == std::string::npos) {
    log::Debug("references: no References line, article left unchanged");
    return text;
  }
  const size_t start = lineBreak + 2;
  size_t lineFeed = text.find('\n', start);
  if (lineFeed == std::string::npos) {
    log::Warning("references: References line has no line end, article left unchanged");
    return text;
  }
  // The measured line holds the header name and the carriage return.
  std::string_view line(text.data() + start, lineFeed - start);
  std::optional<std::string> shortened = ShortenReferencesLine(line, limit);
  if (!shortened) {
    log::Warning("references: References line of " + std::to_string(line.size()) +
                 " characters cannot be shortened to " + std::to_string(limit) +
                 ", article left unchanged");
    return text;
  }
  if (shortened->size() != line.size()) text.replace(start, line.size(), *shortened);
  return text;
}

}  // namespace brindle
