// Windows only: texts shown to a person (language strings, box texts) are
// UTF-8, the Windows "W" functions want UTF-16. Nothing else is converted
// (message and settings texts stay bytes).
#pragma once

#include <string>
#include <string_view>

namespace brindle {

// UTF-8 to UTF-16; invalid sequences become U+FFFD.
std::wstring Utf8ToWide(std::string_view utf8);

}  // namespace brindle
