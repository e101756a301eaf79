#include "sslbridge/bridge_options.h"

#include <algorithm>
#include <cctype>

#include "core/settings_paths.h"
#include "sslbridge/control_command.h"

namespace brindle::sslbridge {
namespace {

std::string Lower(std::string_view text) {
  std::string out(text);
  std::transform(out.begin(), out.end(), out.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return out;
}

std::string_view Trim(std::string_view text) {
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front()))) {
    text.remove_prefix(1);
  }
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) {
    text.remove_suffix(1);
  }
  return text;
}

}  // namespace

bool BridgeOptions::IsInsecureHost(std::string_view host) const {
  std::string key = Lower(host);
  return std::find(insecureHosts.begin(), insecureHosts.end(), key) != insecureHosts.end();
}

std::vector<std::string> ApplyConfigText(std::string_view text, BridgeOptions& options) {
  std::vector<std::string> problems;
  int number = 0;
  while (!text.empty()) {
    size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text = end == std::string_view::npos ? std::string_view{} : text.substr(end + 1);
    ++number;
    line = Trim(line);
    if (line.empty() || line[0] == '#' || line[0] == ';') continue;
    size_t eq = line.find('=');
    std::string key = eq == std::string_view::npos ? "" : Lower(Trim(line.substr(0, eq)));
    std::string_view value = eq == std::string_view::npos ? "" : Trim(line.substr(eq + 1));
    if (key == "ca-file" && !value.empty()) {
      options.caFiles.emplace_back(value);
    } else if (key == "insecure-host" && !value.empty()) {
      options.insecureHosts.push_back(Lower(value));
    } else if (key == "control-port" && ParsePort(value)) {
      options.controlPort = *ParsePort(value);
    } else {
      problems.push_back("line " + std::to_string(number) +
                         " not understood: " + std::string(line));
    }
  }
  return problems;
}

CommandLine ParseCommandLine(int argc, const char* const* argv) {
  CommandLine cl;
  for (int i = 1; i < argc; ++i) {
    std::string_view arg = argv[i];
    if (arg == "-h" || arg == "--help") {
      cl.help = true;
      continue;
    }
    if (i + 1 >= argc) {
      cl.error = "unknown option or missing value: " + std::string(arg);
      return cl;
    }
    std::string_view value = argv[++i];
    if (arg == "--control-port") {
      // 0 is allowed here: any free port, for tests.
      auto port = value == "0" ? std::optional<uint16_t>(0) : ParsePort(value);
      if (!port) {
        cl.error = "bad control port: " + std::string(value);
        return cl;
      }
      cl.controlPort = port;
    } else if (arg == "--ca-file") {
      cl.caFiles.emplace_back(value);
    } else if (arg == "--insecure-host") {
      cl.insecureHosts.push_back(Lower(value));
    } else if (arg == "--config") {
      cl.configFile = std::string(value);
    } else {
      cl.error = "unknown option: " + std::string(arg);
      return cl;
    }
  }
  return cl;
}

std::vector<std::string> ConfigFileCandidates(const std::string& programDir,
                                              const std::string& settingsDir) {
  std::vector<std::string> files;
  if (!programDir.empty()) files.push_back(JoinPath(programDir, kConfigFileName));
  if (!settingsDir.empty() && settingsDir != programDir) {
    files.push_back(JoinPath(settingsDir, kConfigFileName));
  }
  return files;
}

}  // namespace brindle::sslbridge
