#include "core/settings_number.h"

#include <cfenv>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>

namespace brindle::ini {
namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

size_t SkipDigits(std::string_view v, size_t i) {
  while (i < v.size() && IsDigit(v[i])) ++i;
  return i;
}

// Length of the number at the start of v: sign, digits, fraction, exponent.
size_t NumberLength(std::string_view v) {
  size_t i = 0;
  if (i < v.size() && (v[i] == '+' || v[i] == '-')) ++i;
  size_t intEnd = SkipDigits(v, i);
  size_t end = intEnd;
  if (end < v.size() && v[end] == '.') end = SkipDigits(v, end + 1);
  if (end == i || (end == i + 1 && intEnd == i)) return 0;  // no digit at all
  if (end < v.size() && (v[end] == 'e' || v[end] == 'E')) {
    size_t e = end + 1;
    if (e < v.size() && (v[e] == '+' || v[e] == '-')) ++e;
    size_t expEnd = SkipDigits(v, e);
    if (expEnd > e) end = expEnd;
  }
  return end;
}

template <typename T>
std::optional<T> Rounded(std::string_view value) {
  double d = LeadingNumber(value);
  if (!std::isfinite(d)) return std::nullopt;
  double r = std::nearbyint(d);  // the default rounding mode: half to even
  if (r < static_cast<double>(std::numeric_limits<T>::min()) ||
      r > static_cast<double>(std::numeric_limits<T>::max())) {
    return std::nullopt;
  }
  return static_cast<T>(r);
}

}  // namespace

double LeadingNumber(std::string_view value) {
  size_t start = value.find_first_not_of(" \t");
  if (start == std::string_view::npos) return 0;
  value.remove_prefix(start);
  size_t len = NumberLength(value);
  if (len == 0) return 0;
  // from_chars takes no leading '+'.
  std::string text(value.substr(value[0] == '+' ? 1 : 0, value[0] == '+' ? len - 1 : len));
  double d = 0;
  auto [ptr, ec] = std::from_chars(text.data(), text.data() + text.size(), d);
  if (ec == std::errc::result_out_of_range) {
    bool negative = text[0] == '-';
    // Either an overflow (infinite) or an underflow (as good as zero).
    size_t firstNonZero = text.find_first_of("123456789");
    size_t ePos = text.find_first_of("eE");
    bool big = ePos == std::string::npos || text.find('-', ePos) == std::string::npos;
    if (firstNonZero == std::string::npos || !big) return 0;
    return negative ? -HUGE_VAL : HUGE_VAL;
  }
  (void)ptr;
  return d;
}

std::optional<int16_t> NumberAsInt16(std::string_view value) {
  return Rounded<int16_t>(value);
}
std::optional<uint8_t> NumberAsByte(std::string_view value) {
  return Rounded<uint8_t>(value);
}
std::optional<int32_t> NumberAsInt32(std::string_view value) {
  return Rounded<int32_t>(value);
}

}  // namespace brindle::ini
