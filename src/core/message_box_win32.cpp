#include <windows.h>

#include <string>

#include "core/message_box.h"

namespace brindle {
namespace {

std::wstring Wide(std::string_view utf8) {
  if (utf8.empty()) return {};
  const int size = static_cast<int>(utf8.size());
  const int count = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, nullptr, 0);
  std::wstring wide(static_cast<size_t>(count), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, wide.data(), count);
  return wide;
}

UINT IconFlag(BoxIcon icon) {
  switch (icon) {
    case BoxIcon::kInformation:
      return MB_ICONINFORMATION;
    case BoxIcon::kExclamation:
      return MB_ICONEXCLAMATION;
    case BoxIcon::kCritical:
      return MB_ICONERROR;
  }
  return 0;
}

}  // namespace

// Boxes carry UTF-8 so that the Polish texts survive whatever ANSI code page
// the user runs; the wide API shows them as written.
MessageBoxSink PlatformMessageBoxPresenter() {
  return [](std::string_view text, std::string_view title, BoxIcon icon) {
    MessageBoxW(nullptr, Wide(text).c_str(), Wide(title).c_str(),
                MB_OK | MB_SETFOREGROUND | IconFlag(icon));
  };
}

}  // namespace brindle
