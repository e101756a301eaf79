// The six language tables as compiled into the program. The texts are UTF-8;
// the data is generated at build time from strings/<code>.txt.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace brindle::resources {

inline constexpr int kLanguageStringCount = 173;  // offsets 1..173
inline constexpr int kLanguageCount = 6;

struct LanguageTable {
  int16_t base;           // identifier of offset 0: 1000 Polish ... 6000 Spanish
  uint16_t languageId;    // Windows language identifier the resources are stored under
  std::string_view code;  // name of the language file ("pl", "en", ...)
  // Text under identifier 1000 in this table: the decimal base, or empty
  // for a table that has none (Spanish).
  std::string_view identifier1000;
  std::string_view settingsCode;  // names the language in the settings file ("PL", ...)
  std::string_view localeCode;    // ISO 639-1, as POSIX locales name it ("pl", "sl", ...)
  // texts[offset] for offset 1..kLanguageStringCount; texts[0] is empty.
  const std::string_view* texts;
};

// In base order: Polish, English, German, Slovenian, French, Spanish.
extern const std::array<LanguageTable, kLanguageCount> kLanguageTables;

}  // namespace brindle::resources
