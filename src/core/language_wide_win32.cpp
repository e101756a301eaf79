#include "core/language_wide.h"

#include <windows.h>

namespace brindle {

std::wstring Utf8ToWide(std::string_view utf8) {
  if (utf8.empty()) return {};
  int size = static_cast<int>(utf8.size());
  int length = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, nullptr, 0);
  if (length <= 0) return {};
  std::wstring wide(static_cast<size_t>(length), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, wide.data(), length);
  return wide;
}

}  // namespace brindle
