// What the companion is told at start: its control port and whom to trust
// beyond the system's certificate store. Comes from the command line, the
// environment and the file "SslBridge.conf".
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brindle::sslbridge {

inline constexpr uint16_t kDefaultControlPort = 5555;
inline constexpr const char* kConfigFileName = "SslBridge.conf";
// Moves the control port for the program and its companion together (tests,
// machines where 5555 is taken).
inline constexpr const char* kControlPortVariable = "BRINDLE_COMPANION_PORT";

struct BridgeOptions {
  uint16_t controlPort = kDefaultControlPort;  // 0 = any free port (tests)
  std::vector<std::string> caFiles;            // trusted in addition to the system store
  std::vector<std::string> insecureHosts;      // lower case; no verification for these
  std::chrono::milliseconds controlReadLimit{3000};
  std::chrono::milliseconds handshakeLimit{30000};
  // Set when the program started the companion: every control connection
  // must open with it. Empty: commands are taken from this user without one.
  std::string controlKey;

  bool IsInsecureHost(std::string_view host) const;
};

// Reads "key = value" lines: ca-file, insecure-host (both repeatable) and
// control-port. '#' and ';' start comments. Returns one message per line
// that was not understood; the rest is applied.
std::vector<std::string> ApplyConfigText(std::string_view text, BridgeOptions& options);

// The command line: --control-port N, --ca-file FILE, --insecure-host HOST,
// --config FILE (read in place of the usual files). `error` explains a
// rejected command line.
struct CommandLine {
  std::optional<uint16_t> controlPort;
  std::vector<std::string> caFiles;
  std::vector<std::string> insecureHosts;
  std::optional<std::string> configFile;
  bool help = false;
  std::string error;
};
CommandLine ParseCommandLine(int argc, const char* const* argv);

// Where "SslBridge.conf" is looked for, in reading order: the program's own
// folder, then the settings folder the program uses (handed over in
// kSettingsFolderVariable, else the user's default settings folder). Empty
// folders are left out.
std::vector<std::string> ConfigFileCandidates(const std::string& programDir,
                                              const std::string& settingsDir);

}  // namespace brindle::sslbridge
