// Language strings: every text the user interface shows is language string
// N, the text under identifier base + N in one of the six language tables
// (base 1000 Polish, 2000 English, 3000 German, 4000 Slovenian, 5000 French,
// 6000 Spanish). The texts are UTF-8 and live for the whole program.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "core/settings.h"
#include "core/settings_store.h"

namespace brindle {

inline constexpr int kLanguageStringCount = 173;  // offsets 1..173
inline constexpr std::string_view kMessageBoxTitlePrefix = "OE Brindle - ";

bool IsLanguageBase(int16_t base);

// Language string `offset` of the table with base `base`. A base that is not
// one of the six reads the English table; an offset outside 1..173 gives an
// empty text.
std::string_view LanguageString(int16_t base, int offset);
// Language string `offset` of the current language (`intLanguage`).
std::string_view LanguageString(const Settings& settings, int offset);
std::string_view LanguageString(const SettingsStore& store, int offset);

// Message-box title: "OE Brindle - " followed by language string `offset`.
std::string MessageBoxTitle(int16_t base, int offset);
std::string MessageBoxTitle(const Settings& settings, int offset);

// The two-letter codes that name the languages in the settings file: "PL",
// "EN", "DE", "SI", "FR", "SP". TwoLetterCode gives an empty text for an
// unknown base; BaseFromTwoLetterCode ignores letter case and gives nothing
// for an unknown code. (What the settings writer puts on the "Language=" line
// for Spanish is the writer's own rule.)
std::string_view TwoLetterCode(int16_t base);
std::optional<int16_t> BaseFromTwoLetterCode(std::string_view code);

// The base named by a table's identifier-1000 text. Missing (empty) text,
// text that is not a decimal number, or a number that is not a base all mean
// the fallback table: English.
int16_t LanguageBaseFromIdentifier1000(std::string_view text);

// POSIX locale value ("pl_PL.UTF-8", "de_DE@euro", "C", ...) to a base,
// read the way the platform reads identifier 1000 on Windows: the table of
// the locale's language decides, so Spanish ("es"), whose table has no
// identifier 1000, lands on English like every unknown language.
int16_t LanguageBaseForLocale(std::string_view locale);

// The base for the first of LC_ALL, LC_MESSAGES and LANG that is set and not
// empty (English when none is); `getenv` reads one variable, null when unset.
int16_t LanguageBaseFromEnvironment(const std::function<const char*(const char*)>& getenv);

// The default of `intLanguage` when the settings file names none: on Windows
// the number in string resource 1000 of the table the platform picks for the
// user, on POSIX the base for the locale environment.
int16_t DefaultLanguageBase();

}  // namespace brindle
