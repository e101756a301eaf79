// The re-wrapper: re-flows quoted paragraphs that quoting has pushed past the
// wrap length, so the reply does not arrive with ragged, broken lines.
#pragma once

#include <string>
#include <string_view>

namespace brindle {

// Re-flows CR LF separated text to lines of at most width bytes (prefix
// included), keeping each line's quote prefix.
//
// A paragraph is a run of lines of the same quote level that may be joined.
// A line is never joined to the one before it when
// - the quote level changes, or either line is unquoted;
// - either line is blank or holds only its prefix;
// - either line is a signature delimiter "-- ";
// - it starts a list item ("- ", "* ", "+ ", "1. ", "1) ") or is indented;
// - the line before was short on purpose: the first word of this line would
//   have fitted after it, as after a greeting or a sentence that ends well
//   before the margin.
// Only a paragraph with a line longer than width is re-flowed, from that line
// on; all other lines stay byte-identical. A word longer than a line is never
// broken; it stands alone on its line. width <= 0 turns re-wrapping off.
std::string Rewrap(std::string_view text, int width);

}  // namespace brindle
