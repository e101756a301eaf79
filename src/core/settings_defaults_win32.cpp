#include <windows.h>

#include "core/settings_defaults.h"

namespace brindle {

std::string SystemWindowColour() {
  HKEY key = nullptr;
  if (RegOpenKeyExA(HKEY_CURRENT_USER, "Control Panel\\Colors", 0, KEY_QUERY_VALUE, &key) !=
      ERROR_SUCCESS) {
    return "FFFFFF";
  }
  char buf[64] = {};
  DWORD size = sizeof buf - 1;
  DWORD type = 0;
  LONG rc = RegQueryValueExA(key, "Window", nullptr, &type, reinterpret_cast<BYTE*>(buf), &size);
  RegCloseKey(key);
  if (rc != ERROR_SUCCESS || type != REG_SZ) return "FFFFFF";
  return ColourHexFromRgbText(std::string_view(buf));  // stops at the first NUL
}

}  // namespace brindle
