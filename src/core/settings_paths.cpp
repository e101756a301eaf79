#include "core/settings_paths.h"

namespace brindle {

std::string SettingsFolderIn(const std::string& appData) {
  if (appData.empty()) return {};
  return JoinPath(appData, "OE Brindle");
}

std::string JoinPath(std::string_view folder, std::string_view name) {
  std::string path(folder);
  path.append(PathSeparator()).append(name);
  return path;
}

std::string ParentFolder(std::string_view path) {
  for (size_t i = path.size(); i > 0; --i) {
    if (IsPathSeparator(path[i - 1])) return std::string(path.substr(0, i - 1));
  }
  return {};
}

}  // namespace brindle
