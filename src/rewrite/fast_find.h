// Substring search for the filters' scans over whole messages.
#pragma once

#include <cstddef>
#include <string_view>

namespace brindle {

// Same result as text.find(needle, from), in time linear in the text and the
// needle. Compares a short needle's first and last bytes 32 positions at a
// time, so a needle whose first byte is common (every line has a carriage
// return) costs no call per line; the compiler maps the vectors to whatever
// the target offers. A long needle takes a table of its length (may throw
// std::bad_alloc).
size_t FastFind(std::string_view text, std::string_view needle, size_t from = 0);

}  // namespace brindle
