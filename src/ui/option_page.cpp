#include "ui/option_page.h"

#include <cmath>

#include "core/text.h"

namespace brindle::ui {

int16_t ClampedNumber(std::string_view text, int16_t lo, int16_t hi) {
  const double n = std::nearbyint(LeadingNumber(text));
  if (!(n >= lo)) return lo;  // also NaN
  if (n > hi) return hi;
  return static_cast<int16_t>(n);
}

}  // namespace brindle::ui
