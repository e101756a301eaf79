// CSuperString: a growable text buffer for building long texts from many
// small pieces (a channel collecting an article, a long reply text).
//
// It keeps the read-back rules of the classic buffer: the buffer is the used
// text followed by a reserve of spaces, reserved in units of 256000
// characters; TextLeft and TextMid read into that reserve, and TextRight(n)
// gives nothing when n is not below Length. The reserve is never stored: its
// size is tracked as a number and its spaces are produced on reading, while
// the used text lives in storage that grows geometrically, so an append is
// amortised O(1) and never copies the used text except on growth.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace brindle {

class CSuperString {
 public:
  static constexpr int64_t kGrowthUnit = 256000;

  CSuperString() = default;

  // Text (read): the used text.
  const std::string& Text() const { return used_; }
  // Text (write): the buffer becomes value followed by a full unit of reserve.
  void Text(std::string_view value);

  int64_t Length() const { return static_cast<int64_t>(used_.size()); }

  // The first n characters of the buffer, reserve spaces included.
  std::string TextLeft(int64_t n) const;
  // The n characters ending at Length, when Length > n; otherwise empty.
  std::string TextRight(int64_t n) const;
  void Add(std::string_view s);
  // count characters of the buffer from start (1-based), reserve included.
  std::string TextMid(int64_t start, int64_t count) const;

 private:
  std::string Slice(int64_t from, int64_t count) const;  // 0-based, over the logical buffer

  std::string used_;
  int64_t bufferSize_ = kGrowthUnit;  // size of the classic buffer: used text + reserve
};

}  // namespace brindle
