#include "app/settings_binding.h"

#include "core/language.h"
#include "core/settings_migration.h"
#include "core/settings_paths.h"

namespace brindle::app {

int16_t UserLanguage() {
  return DefaultLanguageBase();
}

std::string DefaultSettingsFolder() {
  return SettingsFolderIn(ApplicationDataFolder());
}

std::string ProgramFolder() {
  return brindle::ProgramFolder();
}

LoadedSettings FindSettings(const std::string& programDir, const std::string& settingsDir,
                            int16_t defaultLanguage, const SettingsProgress& progress) {
  FoundSettings found =
      FindAndLoadSettingsWithProgress(settingsDir, programDir, defaultLanguage, progress);
  LoadedSettings loaded;
  loaded.settings = std::move(found.settings);
  loaded.sourceFile = std::move(found.readPath);
  loaded.migrated =
      found.source == SettingsSource::kProgramFolder || found.source == SettingsSource::kOldestName;
  return loaded;
}

}  // namespace brindle::app
