// The program's view of the settings and language subsystems at start-up:
// the user's own language, the default settings folder, the program's
// folder, and the settings found (or migrated) for the load sequence.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "core/settings.h"
#include "core/startup.h"

namespace brindle::app {

int16_t UserLanguage();
std::string DefaultSettingsFolder();
std::string ProgramFolder();

// Gets each tunnel record as soon as it is read, with the settings read so far.
using SettingsProgress = std::function<void(const Settings& readSoFar, const TunnelRecord&)>;

// Defaults, then the file in settingsDir, or an older one beside the program
// (migrated into settingsDir). Tunnels reach `progress` as they are read.
LoadedSettings FindSettings(const std::string& programDir, const std::string& settingsDir,
                            int16_t defaultLanguage, const SettingsProgress& progress);

}  // namespace brindle::app
