#include "fast_find.h"

#include <cstdint>
#include <cstring>

namespace brindle {

namespace {

using Bytes16 = unsigned char __attribute__((vector_size(16)));

Bytes16 Load(const char* at) {
  Bytes16 v;
  std::memcpy(&v, at, sizeof v);
  return v;
}

Bytes16 Splat(char c) {
  return Bytes16{} + static_cast<unsigned char>(c);
}

template <class Vector>
bool Any(Vector v) {
  static_assert(sizeof v == 16);
  uint64_t low;
  uint64_t high;
  std::memcpy(&low, &v, 8);
  std::memcpy(&high, reinterpret_cast<const char*>(&v) + 8, 8);
  return (low | high) != 0;
}

bool MatchesAt(const char* at, std::string_view needle) {
  return std::memcmp(at, needle.data(), needle.size()) == 0;
}

}  // namespace

size_t FastFind(std::string_view text, std::string_view needle, size_t from) {
  const size_t m = needle.size();
  if (from > text.size() || text.size() - from < m) return std::string_view::npos;
  if (m < 2) return text.find(needle, from);
  const char* data = text.data();
  const size_t candidates = text.size() - m + 1;  // starting positions [0, candidates)
  const Bytes16 first = Splat(needle.front());
  const Bytes16 last = Splat(needle.back());
  size_t at = from;
  // Thirty-two positions per step: one test for both halves keeps the loop
  // short where hits are rare, which is the common case for every caller.
  for (; at + 32 <= candidates; at += 32) {
    const auto low = (Load(data + at) == first) & (Load(data + at + m - 1) == last);
    const auto high = (Load(data + at + 16) == first) & (Load(data + at + 15 + m) == last);
    if (!Any(low | high)) continue;
    for (size_t k = 0; k < 32; ++k) {
      if ((k < 16 ? low[k] : high[k - 16]) && MatchesAt(data + at + k, needle)) return at + k;
    }
  }
  for (; at < candidates; ++at) {
    if (data[at] == needle.front() && MatchesAt(data + at, needle)) return at;
  }
  return std::string_view::npos;
}

}  // namespace brindle
