// Texts that only the browser view shows: its own navigation, the status
// tables' columns, the counters, the channel states and the dry run. The
// options pages use the language strings the Windows window uses; these
// follow the same language choice so that a German user sees no English
// caption after switching.
#pragma once

#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

namespace brindle::web {

// Every browser caption as (key, text) in the language with base `base`;
// a base that is not one of the six gives the English texts. The keys are
// the same, in the same order, for every language.
const std::vector<std::pair<std::string_view, std::string_view>>& WebCaptions(int16_t base);

// One caption of WebCaptions(base); an unknown key is returned as it is, so
// a missing caption shows as its key rather than as nothing.
std::string_view WebCaption(int16_t base, std::string_view key);

}  // namespace brindle::web
