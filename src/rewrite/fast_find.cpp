#include "fast_find.h"

#include <cstdint>
#include <cstring>
#include <vector>

namespace brindle {

namespace {

// Up to this length a candidate costs at most one short comparison.
constexpr size_t kLongNeedle = 64;

using Bytes16 = unsigned char __attribute__((vector_size(16)));

// Vectors go by reference only: a 32-bit target without SSE passes them by
// value differently, and these helpers need no ABI of their own.
void Load(Bytes16& v, const char* at) {
  std::memcpy(&v, at, sizeof v);
}

void Splat(Bytes16& v, char c) {
  v = Bytes16{};
  v += static_cast<unsigned char>(c);
}

template <class Vector>
bool Any(const Vector& v) {
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

// Knuth-Morris-Pratt: never looks at a text byte twice, whatever the needle.
// A boundary value comes from the message itself and can be as long and as
// repetitive as a sender likes; comparing it at every candidate position
// would then take time proportional to text length times value length.
size_t FindLong(std::string_view text, std::string_view needle, size_t from) {
  std::vector<size_t> border(needle.size() + 1, 0);  // border[i]: of needle[0, i)
  for (size_t i = 1, k = 0; i < needle.size(); ++i) {
    while (k > 0 && needle[i] != needle[k]) k = border[k];
    if (needle[i] == needle[k]) ++k;
    border[i + 1] = k;
  }
  for (size_t at = from, k = 0; at < text.size(); ++at) {
    while (k > 0 && text[at] != needle[k]) k = border[k];
    if (text[at] == needle[k]) ++k;
    if (k == needle.size()) return at + 1 - k;
  }
  return std::string_view::npos;
}

}  // namespace

size_t FastFind(std::string_view text, std::string_view needle, size_t from) {
  const size_t m = needle.size();
  if (from > text.size() || text.size() - from < m) return std::string_view::npos;
  if (m < 2) return text.find(needle, from);
  if (m > kLongNeedle) return FindLong(text, needle, from);
  const char* data = text.data();
  const size_t candidates = text.size() - m + 1;  // starting positions [0, candidates)
  Bytes16 first;
  Bytes16 last;
  Splat(first, needle.front());
  Splat(last, needle.back());
  Bytes16 a;
  Bytes16 b;
  Bytes16 c;
  Bytes16 d;
  size_t at = from;
  // Thirty-two positions per step: one test for both halves keeps the loop
  // short where hits are rare, which is the common case for every caller.
  for (; at + 32 <= candidates; at += 32) {
    Load(a, data + at);
    Load(b, data + at + m - 1);
    Load(c, data + at + 16);
    Load(d, data + at + 15 + m);
    const auto low = (a == first) & (b == last);
    const auto high = (c == first) & (d == last);
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
