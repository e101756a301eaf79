// The program's command line on POSIX. Everything after --client belongs to
// the client program and is handed on unchanged.
#pragma once

#include <cstdint>
#include <optional>

#include <string>
#include <vector>
#include "core/log.h"

#include "core/status.h"

namespace brindle::app {

struct Options {
  std::optional<std::string> settingsDir;  // instead of the default settings folder
  bool help = false;
  bool version = false;
  std::vector<std::string> client;  // PROGRAM [ARGS...]; empty: run until a signal
  std::string error;                // non-empty: the command line was rejected
};

Options ParseOptions(int argc, const char* const* argv);
std::string UsageText(const std::string& programName);

// The companion's control port when the environment moves it
// (BRINDLE_COMPANION_PORT); nothing when unset. A value that is not a port
// number is an error.
Expected<std::optional<uint16_t>> CompanionPortOverride(const char* value);
// The same for any port variable (BRINDLE_WEB_PORT: the browser view's).
Expected<std::optional<uint16_t>> PortOverride(const char* variable, const char* value);

// BRINDLE_LOG_LEVEL: "debug", "info", "warning" or "error" (the least severe
// entry that is logged; "info" by default); nothing when unset, an error for
// any other word.
std::optional<log::Level> LogLevelOverride(const char* value, std::string& error);

}  // namespace brindle::app
