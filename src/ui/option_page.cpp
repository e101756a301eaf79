#include "ui/option_page.h"

#include <cctype>
#include <charconv>
#include <cmath>

#include "core/text.h"

namespace brindle::ui {

int16_t ClampedNumber(std::string_view text, int16_t lo, int16_t hi) {
  const double n = std::nearbyint(LeadingNumber(text));
  if (!(n >= lo)) return lo;  // also NaN
  if (n > hi) return hi;
  return static_cast<int16_t>(n);
}

std::optional<int32_t> PortNumber(std::string_view text) {
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front())))
    text.remove_prefix(1);
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back())))
    text.remove_suffix(1);
  int32_t port = 0;
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), port);
  if (text.empty() || ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
  if (port < 1 || port > 65535) return std::nullopt;
  return port;
}

}  // namespace brindle::ui
