// The keys of the [Miscellaneous] section, in the order the file lists them.
// The loader and the writer share this one table, so that every key written
// is a key read back.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "core/settings.h"

namespace brindle::ini {

enum class MiscRule {
  kNumber,      // the parsed number, rounded into a 16-bit variable
  kText,        // the value as it stands
  kOneOrZero,   // 1 sets the flag, any other value clears it
  kFilterMode,  // only 0, 1 and 2 are taken
  kLanguage,    // a two-letter code mapped to a language base
};

struct MiscKey {
  std::string_view name;
  MiscRule rule;
  int16_t Settings::*number = nullptr;
  std::string Settings::*text = nullptr;
};

std::span<const MiscKey> MiscKeys();

// Case-insensitive lookup; the older spelling "CoursorOnTop" finds "CursorOnTop".
const MiscKey* FindMiscKey(std::string_view key);

// The code written for a base; empty for a base the file has no code for
// (Spanish included), in which case the line is left unfinished.
std::string_view WrittenLanguageCode(int16_t base);

}  // namespace brindle::ini
