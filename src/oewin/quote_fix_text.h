// Byte-string helpers for the quote-fixing steps. Every one runs in time
// linear in the text, so that a reply of several megabytes is reworked at
// once.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "core/text.h"

namespace brindle {

// Replaces every occurrence of from, scanning left to right without overlap
// and without rescanning what was put in (one pass).
std::string ReplaceAll(std::string_view text, std::string_view from, std::string_view to);

// Splits at CR LF; n line ends give n + 1 lines (an empty text is one line).
std::vector<std::string_view> SplitCrLf(std::string_view text);

// Joins lines with CR LF between them.
std::string JoinCrLf(const std::vector<std::string_view>& lines);
std::string JoinCrLf(const std::vector<std::string>& lines);

// Removes every occurrence of what, also those that only appear once an inner
// one has gone, so the result holds none.
std::string RemoveAllRepeatedly(std::string_view text, std::string_view what);

}  // namespace brindle
