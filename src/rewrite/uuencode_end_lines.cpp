#include "uuencode_end_lines.h"

#include "fast_find.h"

namespace brindle {

size_t UuencodeEndLines::FindFrom(size_t from) {
  for (size_t form = 0; form < kUuencodeEndLines.size(); ++form) {
    const size_t at = NextOf(form, from);
    if (at != std::string_view::npos) return at;
  }
  return std::string_view::npos;
}

size_t UuencodeEndLines::NextOf(size_t form, size_t from) {
  // A remembered hit at or after `from` is still the first one there, since
  // nothing lay between the earlier start and that hit; a remembered miss
  // stays a miss for every later start.
  if (searched_[form] && (hit_[form] == std::string_view::npos || hit_[form] >= from)) {
    return hit_[form];
  }
  searched_[form] = true;
  hit_[form] = FastFind(text_, kUuencodeEndLines[form], from);
  return hit_[form];
}

}  // namespace brindle
