// Message texts are bytes of the system's code page; editors and COM speak
// UTF-16. These convert at that border only.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace brindle {

std::wstring AnsiToWide(std::string_view text);
std::string WideToAnsi(std::wstring_view text);

// A BSTR from the code-page text; the caller frees it (SysFreeString).
BSTR AnsiToBstr(std::string_view text);

}  // namespace brindle
