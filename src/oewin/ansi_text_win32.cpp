#include "oewin/ansi_text_win32.h"

#include <oleauto.h>

namespace brindle {

std::wstring AnsiToWide(std::string_view text) {
  if (text.empty()) return {};
  const int n = MultiByteToWideChar(CP_ACP, 0, text.data(), int(text.size()), nullptr, 0);
  std::wstring out(static_cast<size_t>(n), L'\0');
  MultiByteToWideChar(CP_ACP, 0, text.data(), int(text.size()), out.data(), n);
  return out;
}

std::string WideToAnsi(std::wstring_view text) {
  if (text.empty()) return {};
  const int n =
      WideCharToMultiByte(CP_ACP, 0, text.data(), int(text.size()), nullptr, 0, nullptr, nullptr);
  std::string out(static_cast<size_t>(n), '\0');
  WideCharToMultiByte(CP_ACP, 0, text.data(), int(text.size()), out.data(), n, nullptr, nullptr);
  return out;
}

BSTR AnsiToBstr(std::string_view text) {
  const std::wstring wide = AnsiToWide(text);
  return SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
}

}  // namespace brindle
