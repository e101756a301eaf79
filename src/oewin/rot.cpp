#include "oewin/rot.h"

#include <cmath>

#include "core/text.h"

namespace brindle {
namespace {

constexpr double kShiftLimit = 2000000000.0;

double RoundHalfToEven(double v) {
  const double lower = std::floor(v);
  const double diff = v - lower;
  if (diff < 0.5) return lower;
  if (diff > 0.5) return lower + 1.0;
  return std::fmod(lower, 2.0) == 0.0 ? lower : lower + 1.0;
}

}  // namespace

void RotateInPlace(std::string& text, int64_t n) {
  const int k = static_cast<int>(n % 26);
  if (k == 0) return;
  for (char& ch : text) {
    const int code = static_cast<unsigned char>(ch);
    int c = code + k;
    if (code >= 'A' && code <= 'Z') {
      if (c > 'Z') c -= 26;
      if (c < 'A') c += 26;
    } else if (code >= 'a' && code <= 'z') {
      if (c > 'z') c -= 26;
      if (c < 'a') c += 26;
    } else {
      continue;
    }
    ch = static_cast<char>(c);
  }
}

std::string rotate(std::string_view text, int64_t n) {
  std::string out(text);
  RotateInPlace(out, n);
  return out;
}

int32_t ShiftFromText(std::string_view text) {
  const double v = LeadingNumber(text);
  if (v >= kShiftLimit) return static_cast<int32_t>(kShiftLimit);
  if (v < -kShiftLimit) return static_cast<int32_t>(-kShiftLimit);
  return static_cast<int32_t>(RoundHalfToEven(v));
}

std::optional<int32_t> RoundedShiftFromText(std::string_view text) {
  const double r = RoundHalfToEven(LeadingNumber(text));
  if (!(r >= -2147483648.0 && r <= 2147483647.0)) return std::nullopt;
  return static_cast<int32_t>(r);
}

}  // namespace brindle
