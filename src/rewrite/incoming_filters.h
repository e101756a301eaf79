// Filters of downloaded articles and mails. Each takes the whole message text
// (ending "\r\n.\r\n") and returns the whole new text; none throws, and each
// runs in time and memory linear in the size of the text, whatever its size.
// Which filters run, and when, is the channel's decision: it calls
// FilterBegin only for short articles and FilterChars only in mode 1.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace brindle {

// Control characters (codes 0-8 and 14-31): mode 1 blanks them, keeping the
// length; any other mode deletes them (a branch the channel never reaches,
// since it calls this only in mode 1). Codes 9-13 always stay.
std::string FilterChars(std::string&& text, int16_t charFiltering);
// Whether the text holds a code that FilterChars treats: read only, so that
// a caller can tell whether the filter will change the text without a copy.
bool HasFilteredControls(std::string_view text);

// Disarms malformed uuencoded blocks: a "begin " line whose mode has fewer
// than three octal digits, or whose block has no end line, gets the byte 160
// (no-break space) in place of the blank after "begin". A doubled carriage
// return before "begin " is first taken for a line end.
std::string FilterBegin(std::string&& text);

// Prefixes "[SPAM]" to the first "Subject: " value when its share of bytes of
// 128 and above is over afPercentage percent, or their count is over afMin
// (both strictly). An already marked subject is marked again.
std::string MarkAsianSpam(std::string&& text, int16_t afPercentage, int16_t afMin);

// multipart/signed -> multipart/mixed in the first Content-Type line and in
// the header line of the first part, found through the quoted boundary value.
// Any failure along the way returns the text as changed so far.
std::string FixBoundary(std::string&& text);

}  // namespace brindle
