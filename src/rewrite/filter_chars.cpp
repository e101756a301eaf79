// Control-character filter of downloaded articles.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "incoming_filters.h"

namespace brindle {

namespace {

// Codes 0-8 and 14-31. Tab, line feed, 11, 12 and carriage return (9-13) stay.
// The label of the filter page says "0 - 7, 11, 12, 14 - 31"; the filter has
// always treated 8 (twice) instead of 11 and 12, and users rely on that.
constexpr bool IsFilteredControl(unsigned char c) {
  return c < 9 || (c >= 14 && c < 32);
}

using Bytes16 = unsigned char __attribute__((vector_size(16)));

// All-ones in the lanes holding a filtered code: below 9, or 14 to 31
// (unsigned wrap-around makes the second a single comparison). Vectors go by
// reference only: a 32-bit target without SSE passes them by value
// differently, and these helpers need no ABI of their own.
void ControlLanes(const Bytes16& v, Bytes16& lanes) {
  lanes = reinterpret_cast<Bytes16>((v < 9) | (v - 14 < 18));
}

bool Any(const Bytes16& v) {
  uint64_t half[2];
  std::memcpy(half, &v, sizeof half);
  return (half[0] | half[1]) != 0;
}

// Downloaded text rarely holds a control code, so blocks are only read until
// one does; that block is then blanked lane by lane. The length never changes.
void BlankControls(std::string& text) {
  char* data = text.data();
  const size_t size = text.size();
  size_t at = 0;
  for (; at + 32 <= size; at += 32) {
    Bytes16 low;
    Bytes16 high;
    std::memcpy(&low, data + at, 16);
    std::memcpy(&high, data + at + 16, 16);
    Bytes16 lowHits;
    Bytes16 highHits;
    ControlLanes(low, lowHits);
    ControlLanes(high, highHits);
    if (!Any(lowHits | highHits)) continue;
    Bytes16 blank = Bytes16{};
    blank += ' ';
    low = (low & ~lowHits) | (blank & lowHits);
    high = (high & ~highHits) | (blank & highHits);
    std::memcpy(data + at, &low, 16);
    std::memcpy(data + at + 16, &high, 16);
  }
  for (; at < size; ++at) {
    if (IsFilteredControl(static_cast<unsigned char>(data[at]))) data[at] = ' ';
  }
}

}  // namespace

bool HasFilteredControls(std::string_view text) {
  size_t at = 0;
  for (; at + 32 <= text.size(); at += 32) {
    Bytes16 low;
    Bytes16 high;
    std::memcpy(&low, text.data() + at, 16);
    std::memcpy(&high, text.data() + at + 16, 16);
    Bytes16 lowHits;
    Bytes16 highHits;
    ControlLanes(low, lowHits);
    ControlLanes(high, highHits);
    if (Any(lowHits | highHits)) return true;
  }
  return std::any_of(text.begin() + static_cast<std::ptrdiff_t>(at), text.end(),
                     [](char c) { return IsFilteredControl(static_cast<unsigned char>(c)); });
}

std::string FilterChars(std::string&& text, int16_t charFiltering) {
  if (charFiltering == 1) {
    BlankControls(text);
    return text;
  }
  // Deletion: one compacting pass, no reallocation, so nothing can throw.
  text.erase(
      std::remove_if(text.begin(), text.end(),
                     [](char c) { return IsFilteredControl(static_cast<unsigned char>(c)); }),
      text.end());
  return text;
}

}  // namespace brindle
