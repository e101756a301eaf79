#include <unistd.h>

#include <cstdlib>
#include <string>

#include "core/settings_paths.h"

namespace brindle {

std::string ApplicationDataFolder() {
  const char* xdg = std::getenv("XDG_CONFIG_HOME");
  if (xdg && *xdg) return xdg;
  const char* home = std::getenv("HOME");
  if (home && *home) return std::string(home) + "/.config";
  return {};
}

std::string ProgramFolder() {
  std::string buf(4096, '\0');
  ssize_t n = readlink("/proc/self/exe", buf.data(), buf.size());
  if (n <= 0 || static_cast<size_t>(n) >= buf.size()) return ".";
  buf.resize(static_cast<size_t>(n));
  std::string folder = ParentFolder(buf);
  return folder.empty() ? "/" : folder;
}

void ExportSettingsFolder(const std::string& folder) {
  setenv(kSettingsFolderVariable, folder.c_str(), 1);
}

std::string_view PathSeparator() {
  return "/";
}
bool IsPathSeparator(char c) {
  return c == '/';
}

}  // namespace brindle
