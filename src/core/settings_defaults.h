// The settings every run starts from, before the settings file is read: a
// key missing from the file keeps its value from here.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "core/settings.h"

namespace brindle {

// Put on filtered messages until the user names a mailbox of their own.
inline constexpr std::string_view kDefaultSpammerAddress = "spammer@spam.invalid";

// Every default, with the settings file and the three data files
// ("spammers.txt", "filtered.log", "styles.css") in settingsDir and the
// background colours taken from the system's window colour. An empty
// settingsDir leaves strIniPath empty: the file then lives beside the program.
Settings DefaultSettings(const std::string& settingsDir, int16_t defaultLanguage);

// "R G B" (three decimal numbers 0..255 separated by blanks) as six
// hexadecimal digits, "255 128 0" -> "FF8000"; "FFFFFF" when unreadable.
std::string ColourHexFromRgbText(std::string_view rgb);

// The system's window background colour as six hexadecimal digits.
std::string SystemWindowColour();

}  // namespace brindle
