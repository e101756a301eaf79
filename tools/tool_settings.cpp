#include "tool_settings.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include "core/settings_file.h"
#include "core/settings_paths.h"

namespace brindle {

Status LoadToolSettings(const std::optional<std::string>& dir, Settings& s) {
  const std::string folder = dir ? *dir : SettingsFolderIn(ApplicationDataFolder());
  if (folder.empty()) return Status::Ok();
  std::error_code ec;
  if (!std::filesystem::is_directory(folder, ec)) {
    if (!dir) return Status::Ok();  // the program has not made its folder yet
    return Status::Error("settings folder not found: " + folder);
  }
  const std::string path = JoinPath(folder, "OE_Brindle.ini");
  std::ifstream in(path, std::ios::binary);
  if (!in) return Status::Ok();
  const std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  LoadSettings(bytes, s);
  return Status::Ok();
}

}  // namespace brindle
