// Substring search for the filters' scans over whole messages.
#pragma once

#include <cstddef>
#include <string_view>

namespace brindle {

// Same result as text.find(needle, from). Compares the needle's first and
// last bytes sixteen positions at a time, so a needle whose first byte is
// common (every line has a carriage return) costs no call per line; the
// compiler maps the vectors to whatever the target offers.
size_t FastFind(std::string_view text, std::string_view needle, size_t from = 0);

}  // namespace brindle
