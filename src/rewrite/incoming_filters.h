// Filters of downloaded articles and mails. Each takes the whole message text
// (ending "\r\n.\r\n") and returns the whole new text; none throws.
#pragma once

#include <cstdint>
#include <string>

namespace brindle {

// Control characters: mode 1 blanks them, any other mode deletes them (a
// branch the channel never reaches, since it calls this only in mode 1).
std::string FilterChars(std::string text, int16_t charFiltering);
// Disarms malformed uuencoded blocks ("begin " lines) with a no-break space.
std::string FilterBegin(std::string text);
// Prefixes "[SPAM]" to a subject made mostly of characters above 127.
std::string MarkAsianSpam(std::string text, int16_t afPercentage, int16_t afMin);
// multipart/signed -> multipart/mixed in Content-Type and the first part header.
std::string FixBoundary(std::string text);

}  // namespace brindle
