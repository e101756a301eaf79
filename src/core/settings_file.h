// The settings file "OE_Brindle.ini": reading it into the settings
// variables, and writing them back whole. The file is bytes in the system's
// single-byte code page and is never converted.
#pragma once

#include <atomic>
#include <string>
#include <string_view>

#include "core/settings.h"
#include "core/settings_lines.h"
#include "core/status.h"

namespace brindle {

// Reads a whole settings file into s, over the defaults already in it. Each
// tunnel record is appended to s.tunnels and handed to sink (when set) as
// soon as it is complete, in file order. What cannot be read is skipped and
// logged as a warning, and the variable keeps its value. Returns false when
// *stop became true before the end of the file (the rest is left unread).
bool LoadSettings(std::string_view fileBytes, Settings& s, const TunnelSink& sink = {},
                  const std::atomic<bool>* stop = nullptr);

// The whole file as SaveSettings2Ini writes it (CR LF line ends).
std::string SettingsFileText(const Settings& s);

// Where SaveSettings2Ini writes: s.strIniPath, or "OE_Brindle.ini" in
// programDir when that path is empty.
std::string SettingsTargetPath(const Settings& s, const std::string& programDir);

// Writes the file to path, creating its folder when missing, and replaces
// the old file only once the new one is complete. A failure is logged.
Status WriteSettingsFile(const Settings& s, const std::string& path);

// Writes the whole file to s.strIniPath (or beside the program, see above).
Status SaveSettings2Ini(const Settings& s);

}  // namespace brindle
