// Where the program keeps its settings: the user's application-data folder,
// the settings folder "OE Brindle" inside it, and the program's own folder
// (the place of settings files of older versions).
#pragma once

#include <string>
#include <string_view>

namespace brindle {

// The user's application-data folder; empty when the system names none.
std::string ApplicationDataFolder();

// The folder of the running executable.
std::string ProgramFolder();

// The program hands the settings folder it uses to the programs it starts
// (its TLS companion, which is started without arguments) in this
// environment variable.
inline constexpr const char* kSettingsFolderVariable = "BRINDLE_SETTINGS_DIR";
// Sets it in this process's environment; programs started later inherit it.
void ExportSettingsFolder(const std::string& folder);

// "\" on Windows, "/" elsewhere.
std::string_view PathSeparator();
bool IsPathSeparator(char c);

// appData + separator + "OE Brindle"; empty when appData is empty.
std::string SettingsFolderIn(const std::string& appData);

// folder + separator + name.
std::string JoinPath(std::string_view folder, std::string_view name);

// The path up to its last separator; empty for a bare name.
std::string ParentFolder(std::string_view path);

}  // namespace brindle
