#include "core/text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

namespace brindle {
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

}  // namespace

size_t FindNoCase(std::string_view text, std::string_view needle, size_t from) {
  if (from > text.size()) return std::string_view::npos;
  auto same = [](char a, char b) { return AsciiLower(a) == AsciiLower(b); };
  auto it = std::search(text.begin() + from, text.end(), needle.begin(), needle.end(), same);
  if (it == text.end() && !needle.empty()) return std::string_view::npos;
  return static_cast<size_t>(it - text.begin());
}

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
  (void)ptr;
  if (ec != std::errc::result_out_of_range) return d;
  // Either an overflow (infinite) or an underflow (as good as zero).
  bool negative = text[0] == '-';
  size_t firstNonZero = text.find_first_of("123456789");
  size_t ePos = text.find_first_of("eE");
  bool big = ePos == std::string::npos || text.find('-', ePos) == std::string::npos;
  if (firstNonZero == std::string::npos || !big) return 0;
  return negative ? -HUGE_VAL : HUGE_VAL;
}

}  // namespace brindle
