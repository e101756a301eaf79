// Searching and splicing message texts for the outgoing rewriting steps.
// Positions are 0-based indexes into the whole text; std::string::npos means
// "not found".
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "core/text.h"

namespace brindle {

// A message text that takes a series of small insertions without copying the
// whole text for each one. The text is kept as an edited head followed by an
// untouched tail of the original; an insertion copies only the original up
// to its position into the head, so headers added near the top of a huge
// article cost a few hundred bytes each and one final join.
class SplicedText {
 public:
  explicit SplicedText(std::string_view original) : tail_(original) {}

  size_t size() const { return head_.size() + tail_.size(); }
  // First occurrence of `needle` at or after `from`, across head and tail.
  size_t Find(std::string_view needle, size_t from = 0) const;
  void Insert(size_t pos, std::string_view piece);
  // The whole text; the object is spent afterwards.
  std::string Join() &&;

 private:
  std::string head_;
  std::string_view tail_;
};

}  // namespace brindle
