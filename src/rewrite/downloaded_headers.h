// The header block of a downloaded message as the server sends it: its
// status line ("220 ..." or "+OK ..."), then header lines up to the first
// empty line. Names are compared without regard to ASCII case; a field may
// go on over continuation lines (starting with a blank or a tab).
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace brindle {

struct HeaderField {
  size_t start = 0;       // first byte of the name
  size_t valueStart = 0;  // first byte after the colon
  size_t end = 0;         // the CR LF that ends the field's last line
};

// The first field called `name` (without the colon) in the header block.
std::optional<HeaderField> FindHeaderField(std::string_view text, std::string_view name);

// That field's value with continuation lines joined and blanks trimmed;
// empty when there is no such field.
std::string HeaderValue(std::string_view text, std::string_view name);

// The mailbox of a From value: inside the last angle brackets when there are
// any (display names and comments around them do not count), otherwise the
// first word holding an "@". Empty when the value names no mailbox.
std::string MailboxOf(std::string_view fromValue);

}  // namespace brindle
