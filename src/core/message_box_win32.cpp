#include <windows.h>

#include <string>

#include "core/language_wide.h"
#include "core/message_box.h"

namespace brindle {
namespace {

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
    MessageBoxW(nullptr, Utf8ToWide(text).c_str(), Utf8ToWide(title).c_str(),
                MB_OK | MB_SETFOREGROUND | IconFlag(icon));
  };
}

}  // namespace brindle
