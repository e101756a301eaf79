#include "tool_settings.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include "core/settings_file.h"
#include "core/settings_paths.h"

namespace brindle {

bool LoadToolSettings(const std::optional<std::string>& dir, Settings& s, std::string& error) {
  const std::string folder = dir ? *dir : SettingsFolderIn(ApplicationDataFolder());
  if (folder.empty()) return true;
  std::error_code ec;
  if (!std::filesystem::is_directory(folder, ec)) {
    if (!dir) return true;  // the program has not made its folder yet
    error = "settings folder not found: " + folder;
    return false;
  }
  const std::string path = JoinPath(folder, "OE_Brindle.ini");
  std::ifstream in(path, std::ios::binary);
  if (!in) return true;
  const std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  LoadSettings(bytes, s);
  return true;
}

}  // namespace brindle
