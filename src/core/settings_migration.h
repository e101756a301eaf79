// Finding the settings file at start-up: the file in the settings folder, or
// a file of an older version beside the program, moved into the settings
// folder on the way.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "core/settings.h"

namespace brindle {

enum class SettingsSource {
  kDefaults,        // no file found (or none readable): the defaults stand
  kSettingsFolder,  // "OE_Brindle.ini" in the settings folder
  kProgramFolder,   // "OE_Brindle.ini" beside the program, moved
  kOldestName,      // "OE Bulwark.ini" beside the program, copied
};

struct FoundSettings {
  Settings settings;
  SettingsSource source = SettingsSource::kDefaults;
  std::string readPath;  // the file that was read; empty for the defaults
};

// Creates settingsDir when missing, starts from the defaults and reads the
// first file found. A file found beside the program is saved at once into the
// settings folder; the old "OE_Brindle.ini" is then deleted, and for the
// oldest name "OE_Bulwark.ini" (with an underscore) is deleted while the
// "OE Bulwark.ini" that was read stays where it is. Tunnels go to sink as
// they are read.
FoundSettings FindAndLoadSettings(const std::string& settingsDir, const std::string& programDir,
                                  int16_t defaultLanguage, const TunnelSink& sink);

// The same, for a sink that needs the values read so far with each tunnel
// (the program publishes them, so that a tunnel's error box is already in
// the language the file names).
using SettingsProgressSink =
    std::function<void(const Settings& readSoFar, const TunnelRecord& record)>;
FoundSettings FindAndLoadSettingsWithProgress(const std::string& settingsDir,
                                              const std::string& programDir,
                                              int16_t defaultLanguage,
                                              const SettingsProgressSink& sink);

// "defaults", "settings folder", ... for the start-up summary.
const char* SettingsSourceName(SettingsSource source);

}  // namespace brindle
