#include "core/settings_number.h"

#include "core/text.h"

#include <cmath>
#include <limits>

namespace brindle::ini {
namespace {

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
