// Outgoing header rewriting of news articles and mails: identification
// headers replaced, custom headers inserted, References shortened.
// Each step takes the whole message text (headers, empty line, body and the
// final "\r\n.\r\n") and returns the whole new text. None throws: where the
// text is not what the original client writes (no identification header, no
// References line that can be shortened), the text comes back unchanged and
// the event is logged.
#pragma once

#include <string>

#include "core/settings.h"

namespace brindle {

// X-Newsreader (when intXNewsreader) and X-MimeOLE (when intXMimeOLE).
std::string ChangeNewsHeaders(std::string&& text, const Settings& settings);
// X-Mailer (when intXNewsreader: the news switch, deliberately) and
// X-MimeOLE (when intXMimeOLEMail).
std::string ChangeMailHeaders(std::string&& text, const Settings& settings);
std::string InsertNewsCustomHeaders(std::string&& text, const Settings& settings);
std::string InsertMailCustomHeaders(std::string&& text, const Settings& settings);
// Drops the second message id per pass until the References line is at most
// `limit` characters; the first id always stays.
std::string CutReferences(std::string&& text, int limit);

}  // namespace brindle
