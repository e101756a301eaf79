// The text written back into an editor: line ends the editor takes as one
// line break each, and for the HTML document the same lines as HTML, with the
// cursor marker turned into an empty element the caret can be moved to.
#pragma once

#include <string>
#include <string_view>

namespace brindle {

// The id of the element that stands for the cursor marker in HTML mode.
inline constexpr std::string_view kCursorElementId = "kursor";

// Every line end as CR LF: a run of CRs before a LF is one line end (the
// quote-fixing pieces can meet as "\r\r\n"), and a lone CR or a lone LF is
// one line end too. An editor shown "\r\r\n" would otherwise show an extra
// empty line or a stray character.
std::string NormaliseLineEnds(std::string_view text);

// The plain text as HTML that shows the same lines: &, <, > and " escaped,
// every line end a <BR>, runs of spaces kept visible, and the cursor marker
// as <SPAN id=kursor></SPAN>.
std::string PlainTextToHtml(std::string_view text);

}  // namespace brindle
