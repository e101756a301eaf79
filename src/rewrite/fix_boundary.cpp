// Relabelling of signed multipart messages as mixed ones.
#include <new>
#include <string_view>

#include "core/log.h"
#include "fast_find.h"
#include "incoming_filters.h"

namespace brindle {

namespace {

constexpr std::string_view kContentType = "Content-Type: ";
constexpr std::string_view kBoundary = "boundary=";
constexpr std::string_view kSigned = "multipart/signed";
constexpr std::string_view kMixed = "multipart/mixed";

// Replaces every "multipart/signed" in the line starting at `at` (up to its
// CR LF, which the word cannot span). The line is rebuilt once and spliced
// in once, so a line full of the word stays linear. False when the line has
// no end, in which case nothing changes.
bool RelabelLine(std::string& text, size_t at) {
  const size_t end = text.find("\r\n", at);
  if (end == std::string::npos) return false;
  const std::string_view line(text.data() + at, end - at);
  size_t hit = line.find(kSigned);
  if (hit == std::string_view::npos) return true;
  std::string fixed;
  fixed.reserve(line.size());
  size_t copied = 0;
  for (; hit != std::string_view::npos; hit = line.find(kSigned, copied)) {
    fixed.append(line.substr(copied, hit - copied)).append(kMixed);
    copied = hit + kSigned.size();
  }
  fixed.append(line.substr(copied));
  text.replace(at, line.size(), fixed);
  return true;
}

// Where the first part header lies: behind the first occurrence of the quoted
// boundary value, searched from (value length + 10) characters after the
// start of "boundary=", which is the closing quote when the value follows
// "boundary=" directly. npos when any piece is missing.
size_t FindFirstPartHeader(const std::string& text, size_t contentType) {
  const size_t boundary = FastFind(text, kBoundary, contentType);
  if (boundary == std::string::npos) return std::string::npos;
  const size_t open = text.find('"', boundary);
  if (open == std::string::npos) return std::string::npos;
  const size_t close = text.find('"', open + 1);
  if (close == std::string::npos) return std::string::npos;
  const std::string_view value(text.data() + open + 1, close - open - 1);
  const size_t from = boundary + kBoundary.size() + 1 + value.size();
  if (from > text.size()) return std::string::npos;
  const size_t delimiter = FastFind(text, value, from);
  if (delimiter == std::string::npos) return std::string::npos;
  return text.find(kContentType, delimiter + value.size());
}

}  // namespace

std::string FixBoundary(std::string&& text) {
  try {
    const size_t contentType = text.find(kContentType);
    if (contentType == std::string::npos || !RelabelLine(text, contentType)) return text;
    const size_t partHeader = FindFirstPartHeader(text, contentType);
    if (partHeader != std::string::npos) RelabelLine(text, partHeader);
  } catch (const std::bad_alloc&) {
    // Each splice is all-or-nothing, so the text is whole as changed so far.
    log::Warning("Signed-multipart relabelling: out of memory, text left as it was");
  }
  return text;
}

}  // namespace brindle
