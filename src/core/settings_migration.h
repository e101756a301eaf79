// Finding and reading the settings at start-up: the file in the settings
// folder, or a file of an older version beside the program, moved into the
// settings folder on the way. The program's one way into the settings file.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "core/settings.h"

namespace brindle {

struct SettingsPlaces {
  std::string settingsDir;  // the user's settings folder; may be empty
  std::string programDir;   // where older versions kept their file
};

enum class SettingsSource {
  kDefaults,        // no file found (or none readable): the defaults stand
  kSettingsFolder,  // "OE_Brindle.ini" in the settings folder
  kProgramFolder,   // "OE_Brindle.ini" beside the program, moved
  kOldestName,      // "OE Bulwark.ini" beside the program, copied
};

// The settings as start-up found them.
struct LoadedSettings {
  Settings settings;
  SettingsSource source = SettingsSource::kDefaults;
  std::string sourceFile;  // the file that was read; empty: none, the defaults stand
  bool stopped = false;    // the load was asked to stop before the file's end

  // An older file was read whole and saved to the settings folder.
  bool Migrated() const {
    return !stopped &&
           (source == SettingsSource::kProgramFolder || source == SettingsSource::kOldestName);
  }
};

// Creates the settings folder when missing, starts from the defaults and
// reads the first file found. A file found beside the program is saved at
// once into the settings folder; the old "OE_Brindle.ini" is then deleted,
// and for the oldest name "OE_Bulwark.ini" (with an underscore) is deleted
// while the "OE Bulwark.ini" that was read stays where it is. Tunnels go to
// sink as they are read. When *stop becomes true the reading ends early and
// nothing is saved or deleted: the file stays as it was for the next start.
LoadedSettings FindAndLoadSettings(const SettingsPlaces& places, int16_t defaultLanguage,
                                   const TunnelSink& sink, const std::atomic<bool>* stop = nullptr);

}  // namespace brindle
