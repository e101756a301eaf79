#include "core/settings_migration.h"

#include "core/log.h"
#include "core/settings_defaults.h"
#include "core/settings_file.h"
#include "core/settings_files.h"
#include "core/settings_paths.h"

namespace brindle {
namespace {

using namespace ini;

bool LoadFile(const std::string& path, SettingsSource source, const TunnelSink& sink,
              const std::atomic<bool>* stop, LoadedSettings& loaded) {
  Expected<std::string> bytes = ReadFileBytes(path);
  if (!bytes.ok()) {
    log::Warning(bytes.status().message() + "; the settings file is not read, defaults are used");
    return false;
  }
  loaded.stopped = !LoadSettings(*bytes, loaded.settings, sink, stop);
  loaded.source = source;
  loaded.sourceFile = path;
  return !loaded.stopped;
}

// Moves settings read beside the program into the settings folder. The old
// file is deleted only once the new one is written, and only when there is a
// settings folder (without one, the new file is the old one).
void MoveBesideProgram(const Settings& s, const std::string& programDir,
                       const std::string& oldPath) {
  if (!WriteSettingsFile(s, SettingsTargetPath(s, programDir)).ok()) return;
  if (s.strIniPath.empty() || !FileExists(oldPath)) return;
  if (!RemoveFile(oldPath)) log::Warning("cannot delete the old settings file \"" + oldPath + "\"");
}

}  // namespace

LoadedSettings FindAndLoadSettings(const SettingsPlaces& places, int16_t defaultLanguage,
                                   const TunnelSink& sink, const std::atomic<bool>* stop) {
  LoadedSettings loaded;
  const std::string& settingsDir = places.settingsDir;
  if (!settingsDir.empty() && !FolderExists(settingsDir) && !MakeFolders(settingsDir)) {
    log::Warning("cannot create the settings folder \"" + settingsDir + "\"");
  }
  loaded.settings = DefaultSettings(settingsDir, defaultLanguage);
  const std::string& iniPath = loaded.settings.strIniPath;
  // A save killed half-way leaves its temporary file (of any size) behind;
  // the settings file itself is whole.
  if (!iniPath.empty() && FileExists(iniPath + ".new")) {
    if (RemoveFile(iniPath + ".new"))
      log::Info("removed an unfinished save \"" + iniPath + ".new\"");
  }
  if (!iniPath.empty() && FileExists(iniPath)) {
    LoadFile(iniPath, SettingsSource::kSettingsFolder, sink, stop, loaded);
    return loaded;
  }
  std::string old = JoinPath(places.programDir, "OE_Brindle.ini");
  if (FileExists(old)) {
    if (LoadFile(old, SettingsSource::kProgramFolder, sink, stop, loaded)) {
      MoveBesideProgram(loaded.settings, places.programDir, old);
    }
    return loaded;
  }
  // The oldest versions: the file read has a blank in its name, the one
  // deleted an underscore. Kept so; the next start finds the new file first.
  std::string oldest = JoinPath(places.programDir, "OE Bulwark.ini");
  if (FileExists(oldest)) {
    if (LoadFile(oldest, SettingsSource::kOldestName, sink, stop, loaded)) {
      MoveBesideProgram(loaded.settings, places.programDir,
                        JoinPath(places.programDir, "OE_Bulwark.ini"));
    }
  }
  return loaded;
}

}  // namespace brindle
