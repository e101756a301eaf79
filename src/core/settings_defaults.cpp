#include "core/settings_defaults.h"

#include <charconv>

#include "core/settings_paths.h"

namespace brindle {

Settings DefaultSettings(const std::string& settingsDir, int16_t defaultLanguage) {
  Settings s;
  s.strSettingsDir = settingsDir;
  if (!settingsDir.empty()) s.strIniPath = JoinPath(settingsDir, "OE_Brindle.ini");
  s.strSpammers = JoinPath(settingsDir, "spammers.txt");
  s.strLog = JoinPath(settingsDir, "filtered.log");
  s.strStyles = JoinPath(settingsDir, "styles.css");
  s.strSpammerAddress = kDefaultSpammerAddress;
  s.intLanguage = defaultLanguage;
  s.strTlo = s.strTloListy = SystemWindowColour();
  return s;
}

std::string ColourHexFromRgbText(std::string_view rgb) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string hex;
  size_t pos = 0;
  for (int i = 0; i < 3; ++i) {
    while (pos < rgb.size() && rgb[pos] == ' ') ++pos;
    unsigned value = 0;
    auto [end, ec] = std::from_chars(rgb.data() + pos, rgb.data() + rgb.size(), value);
    if (ec != std::errc() || value > 255) return "FFFFFF";
    pos = static_cast<size_t>(end - rgb.data());
    hex += kHex[value >> 4];
    hex += kHex[value & 15];
  }
  while (pos < rgb.size() && (rgb[pos] == ' ' || rgb[pos] == '\0')) ++pos;
  return pos == rgb.size() ? hex : "FFFFFF";
}

}  // namespace brindle
