// The ROT coder: a Caesar shift of the letters A-Z and a-z (ROT13 is a shift
// of 13), used to hide spoilers and punch lines in posts.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace brindle {

// Shifts every A-Z and a-z byte by n modulo 26, keeping the sign of n, so a
// negative shift decodes. All other bytes (digits, punctuation, line ends,
// accented letters of the code page) stay as they are.
std::string rotate(std::string_view text, int64_t n);
// In place, for coding a stream chunk by chunk.
void RotateInPlace(std::string& text, int64_t n);

// The shift the encode button uses: the leading number of the text as
// typed (LeadingNumber of core/text.h), held within
// -2000000000..2000000000 and rounded to the nearest integer, halves to the
// even one ("2.5" is 2, "3.5" is 4).
int32_t ShiftFromText(std::string_view text);

// The shift the replace button uses: rounded the same way but not held in
// range; no value when it does not fit a 32-bit shift, and the replace then
// does nothing.
std::optional<int32_t> RoundedShiftFromText(std::string_view text);

}  // namespace brindle
