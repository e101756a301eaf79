#include "app/settings_binding.h"

#include "core/language.h"
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

}  // namespace brindle::app
