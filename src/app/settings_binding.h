// The program's view of the settings and language subsystems at start-up:
// the user's own language, the default settings folder and the program's
// folder.
#pragma once

#include <cstdint>
#include <string>

namespace brindle::app {

int16_t UserLanguage();
std::string DefaultSettingsFolder();
std::string ProgramFolder();

}  // namespace brindle::app
