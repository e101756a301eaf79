#include "core/settings_migration.h"

#include <optional>

#include "core/log.h"
#include "core/settings_defaults.h"
#include "core/settings_file.h"
#include "core/settings_files.h"
#include "core/settings_paths.h"

namespace brindle {
namespace {

using namespace ini;

bool LoadFile(const std::string& path, FoundSettings& found, SettingsSource source,
              const TunnelSink& sink) {
  std::optional<std::string> bytes = ReadFileBytes(path);
  if (!bytes) {
    log::Warning("cannot read the settings file \"" + path + "\"; defaults are used");
    return false;
  }
  LoadSettings(*bytes, found.settings, sink);
  found.source = source;
  found.readPath = path;
  return true;
}

// Moves settings read beside the program into the settings folder. The old
// file is deleted only once the new one is written, and only when there is a
// settings folder (without one, the new file is the old one).
void MoveBesideProgram(FoundSettings& found, const std::string& programDir,
                       const std::string& oldPath) {
  const Settings& s = found.settings;
  if (!WriteSettingsFile(s, SettingsTargetPath(s, programDir))) return;
  if (s.strIniPath.empty() || !FileExists(oldPath)) return;
  if (!RemoveFile(oldPath)) log::Warning("cannot delete the old settings file \"" + oldPath + "\"");
}

}  // namespace

FoundSettings FindAndLoadSettings(const std::string& settingsDir, const std::string& programDir,
                                  int16_t defaultLanguage, const TunnelSink& sink) {
  return FindAndLoadSettingsWithProgress(settingsDir, programDir, defaultLanguage,
                                         [&sink](const Settings&, const TunnelRecord& record) {
                                           if (sink) sink(record);
                                         });
}

FoundSettings FindAndLoadSettingsWithProgress(const std::string& settingsDir,
                                              const std::string& programDir,
                                              int16_t defaultLanguage,
                                              const SettingsProgressSink& progressSink) {
  FoundSettings found;
  const TunnelSink sink = [&found, &progressSink](const TunnelRecord& record) {
    if (progressSink) progressSink(found.settings, record);
  };
  if (!settingsDir.empty() && !FolderExists(settingsDir) && !MakeFolders(settingsDir)) {
    log::Warning("cannot create the settings folder \"" + settingsDir + "\"");
  }
  found.settings = DefaultSettings(settingsDir, defaultLanguage);
  const std::string& iniPath = found.settings.strIniPath;
  if (!iniPath.empty() && FileExists(iniPath)) {
    LoadFile(iniPath, found, SettingsSource::kSettingsFolder, sink);
    return found;
  }
  std::string old = JoinPath(programDir, "OE_Brindle.ini");
  if (FileExists(old)) {
    if (LoadFile(old, found, SettingsSource::kProgramFolder, sink)) {
      MoveBesideProgram(found, programDir, old);
    }
    return found;
  }
  // The oldest versions: the file read has a blank in its name, the one
  // deleted an underscore. Kept so; the next start finds the new file first.
  std::string oldest = JoinPath(programDir, "OE Bulwark.ini");
  if (FileExists(oldest)) {
    if (LoadFile(oldest, found, SettingsSource::kOldestName, sink)) {
      MoveBesideProgram(found, programDir, JoinPath(programDir, "OE_Bulwark.ini"));
    }
  }
  return found;
}

const char* SettingsSourceName(SettingsSource source) {
  switch (source) {
    case SettingsSource::kDefaults:
      return "defaults";
    case SettingsSource::kSettingsFolder:
      return "settings folder";
    case SettingsSource::kProgramFolder:
      return "older file beside the program";
    case SettingsSource::kOldestName:
      return "oldest file beside the program";
  }
  return "defaults";
}

}  // namespace brindle
