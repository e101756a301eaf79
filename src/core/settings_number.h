// Numbers in the settings file. A value is read as the decimal number it
// starts with (blanks before it allowed, anything after it ignored); a value
// that does not start with a number counts as 0. Variables narrower than the
// number receive it rounded half to even, and a value that does not fit is
// refused so that the variable keeps what it had.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace brindle::ini {

std::optional<int16_t> NumberAsInt16(std::string_view value);
std::optional<uint8_t> NumberAsByte(std::string_view value);
std::optional<int32_t> NumberAsInt32(std::string_view value);

}  // namespace brindle::ini
