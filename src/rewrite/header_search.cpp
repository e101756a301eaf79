#include "rewrite/header_search.h"

#include <algorithm>
#include <utility>

namespace brindle {
size_t SplicedText::Find(std::string_view needle, size_t from) const {
  const size_t headSize = head_.size();
  if (from < headSize) {
    size_t hit = head_.find(needle, from);
    if (hit != std::string::npos) return hit;
    // A match that starts in the head and ends in the tail.
    if (needle.size() > 1 && !tail_.empty()) {
      size_t start = std::max(from, headSize - std::min(headSize, needle.size() - 1));
      std::string seam = head_.substr(start);
      seam.append(tail_.substr(0, needle.size() - 1));
      hit = seam.find(needle);
      if (hit != std::string::npos) return start + hit;
    }
  }
  size_t tailFrom = from > headSize ? from - headSize : 0;
  if (tailFrom > tail_.size()) return std::string::npos;
  size_t hit = tail_.find(needle, tailFrom);
  return hit == std::string::npos ? hit : headSize + hit;
}

void SplicedText::Insert(size_t pos, std::string_view piece) {
  if (pos <= head_.size()) {
    head_.insert(pos, piece);
    return;
  }
  size_t take = std::min(pos - head_.size(), tail_.size());
  head_.append(tail_.substr(0, take));
  tail_.remove_prefix(take);
  head_.append(piece);
}

std::string SplicedText::Join() && {
  head_.append(tail_);
  tail_ = {};
  return std::move(head_);
}

}  // namespace brindle
