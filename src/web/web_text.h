// Text between the program and the browser. Message texts and settings
// values are bytes of the system's single-byte code page (windows-1250 by
// default, BRINDLE_CODEPAGE to change it); the browser speaks UTF-8. Form
// bodies arrive URL-encoded; answers go out as JSON.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace brindle::web {

std::string CodePageToUtf8(std::string_view bytes);
// Characters the code page lacks become "?".
std::string Utf8ToCodePage(std::string_view utf8);

// "a=1&b=x%20y" -> {a: "1", b: "x y"}; "+" is a space. Later keys win.
std::map<std::string, std::string> ParseForm(std::string_view body);
std::string UrlDecode(std::string_view text);

// A JSON string literal (quotes included) of UTF-8 text.
std::string JsonString(std::string_view utf8);

}  // namespace brindle::web
