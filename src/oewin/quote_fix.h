// QuoteFix: rebuilds the reply or forward text the client puts into a new
// compose window before the user starts typing. The client's text is split
// into what stands above its separator block (the user's signature), the
// separator block (the quoted message's header lines) and the quoted body;
// the body is re-quoted, its prefixes normalised, its signature cut, its
// paragraphs re-wrapped and its empty lines compressed; the block may be
// replaced by the user's attribution line; and the pieces are put together
// again for top or bottom posting around the cursor marker.
//
// The intQuoteFix switch is read by the callers, not here: the compose-window
// tracking skips QuoteFix when it is 0, and so does the brindle-quotefix tool.
#pragma once

#include <string>
#include <string_view>

#include "core/settings.h"
#include "oewin/quote_fix_message.h"

namespace brindle {

// Where the user is to type; the caller puts the caret there and removes it.
inline constexpr std::string_view kCursorMarker = "###kursor###";

struct QuoteFixOptions {
  // Read: intWrotkaNews/strWrotkaNews, intWrotkaMail/strWrotkaMail,
  // intHorizontalQCompression, intWrap, intVerticalQCompression,
  // intBottomPosting.
  const Settings& settings;
  // Ctrl held down while the window opens keeps the quoted signature.
  bool ctrlHeld = false;
};

// True when the subject starts with "Re:" or "Fw:" in any case ("Fwd:" does
// not count).
bool IsReplyOrForward(std::string_view subject);

// Returns the new editor text and fills the message's QuotedText,
// QuoteHeader and TopText. A message that is not a reply or forward comes
// back unchanged, or with one blank line in front when its subject is empty.
// The result of a reply or forward holds kCursorMarker exactly once. An
// empty result means: leave the editor's text as it is.
std::string QuoteFix(QuoteMessage& message, std::string_view text, const QuoteFixOptions& options);

}  // namespace brindle
