#include "oewin/super_string.h"

#include <algorithm>

namespace brindle {

void CSuperString::Text(std::string_view value) {
  used_.assign(value.data(), value.size());
  bufferSize_ = Length() + kGrowthUnit;
}

void CSuperString::Add(std::string_view s) {
  const int64_t length = Length();
  const int64_t piece = static_cast<int64_t>(s.size());
  // The capacity is assumed from the length, not read from the buffer, and a
  // growth is sized from the piece, not from the shortfall.
  const int64_t assumed = (length / kGrowthUnit + 1) * kGrowthUnit;
  if (piece >= assumed - length) bufferSize_ += (piece / kGrowthUnit + 1) * kGrowthUnit;
  used_.append(s.data(), s.size());
  bufferSize_ = std::max(bufferSize_, Length());
}

std::string CSuperString::Slice(int64_t from, int64_t count) const {
  if (from < 0 || count <= 0 || from >= bufferSize_) return {};
  count = std::min(count, bufferSize_ - from);
  std::string out;
  out.reserve(static_cast<size_t>(count));
  const int64_t length = Length();
  if (from < length) {
    const int64_t take = std::min(count, length - from);
    out.append(used_, static_cast<size_t>(from), static_cast<size_t>(take));
  }
  out.append(static_cast<size_t>(count - static_cast<int64_t>(out.size())), ' ');
  return out;
}

std::string CSuperString::TextLeft(int64_t n) const { return Slice(0, n); }

std::string CSuperString::TextRight(int64_t n) const {
  const int64_t length = Length();
  if (n < 0 || length <= n) return {};
  return used_.substr(static_cast<size_t>(length - n));
}

std::string CSuperString::TextMid(int64_t start, int64_t count) const {
  if (start < 1) return {};
  return Slice(start - 1, count);
}

}  // namespace brindle
