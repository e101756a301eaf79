#include <shlobj.h>
#include <windows.h>

#include <string>

#include "core/settings_paths.h"

namespace brindle {

std::string ApplicationDataFolder() {
  char buf[MAX_PATH + 1] = {};
  // 26: the application-data folder of the current user.
  if (FAILED(SHGetFolderPathA(nullptr, 26, nullptr, 0, buf))) return {};
  buf[MAX_PATH] = '\0';
  return std::string(buf);  // cut at the first NUL
}

std::string ProgramFolder() {
  std::string buf(MAX_PATH, '\0');
  for (;;) {
    DWORD n = GetModuleFileNameA(nullptr, buf.data(), static_cast<DWORD>(buf.size()));
    if (n == 0) return ".";
    if (n < buf.size()) {
      buf.resize(n);
      break;
    }
    buf.resize(buf.size() * 2);
  }
  return ParentFolder(buf);
}

void ExportSettingsFolder(const std::string& folder) {
  // The process environment block, which the shell hands to what it starts.
  SetEnvironmentVariableA(kSettingsFolderVariable, folder.c_str());
}

std::string_view PathSeparator() {
  return "\\";
}
bool IsPathSeparator(char c) {
  return c == '\\' || c == '/';
}

}  // namespace brindle
