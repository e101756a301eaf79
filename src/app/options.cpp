#include "app/options.h"

#include <charconv>
#include <string_view>

namespace brindle::app {

Options ParseOptions(int argc, const char* const* argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string_view arg = argv[i];
    if (arg == "--help" || arg == "-h") {
      options.help = true;
    } else if (arg == "--version") {
      options.version = true;
    } else if (arg == "--settings-dir") {
      if (i + 1 >= argc || argv[i + 1][0] == '\0') {
        options.error = "--settings-dir needs a folder";
        return options;
      }
      options.settingsDir = argv[++i];
    } else if (arg == "--client") {
      if (i + 1 >= argc) {
        options.error = "--client needs a program";
        return options;
      }
      options.client.assign(argv + i + 1, argv + argc);
      return options;
    } else {
      options.error = "unknown option: " + std::string(arg);
      return options;
    }
  }
  return options;
}

std::string UsageText(const std::string& programName) {
  return "Usage: " + programName +
         " [--settings-dir DIR] [--client PROGRAM [ARGS...]]\n"
         "       " +
         programName +
         " --help | --version\n"
         "\n"
         "Runs the news and mail tunnels of the settings file until SIGINT or SIGTERM,\n"
         "or, with --client, until PROGRAM ends (its exit status becomes ours).\n"
         "\n"
         "  --settings-dir DIR   use DIR instead of the default settings folder\n"
         "  --client PROGRAM...  start PROGRAM with the remaining arguments once the\n"
         "                       tunnels are up\n"
         "  --help               show this text\n"
         "  --version            show the version\n";
}

Expected<std::optional<uint16_t>> CompanionPortOverride(const char* value) {
  return PortOverride("BRINDLE_COMPANION_PORT", value);
}

Expected<std::optional<uint16_t>> PortOverride(const char* variable, const char* value) {
  using Port = std::optional<uint16_t>;
  if (value == nullptr || *value == '\0') return Port();
  const std::string_view text = value;
  unsigned port = 0;
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), port);
  if (ec != std::errc() || end != text.data() + text.size() || port == 0 || port > 65535) {
    return Status::Error(std::string(variable) + " is not a port number: " + std::string(text));
  }
  return Port(static_cast<uint16_t>(port));
}

std::optional<log::Level> LogLevelOverride(const char* value, std::string& error) {
  if (value == nullptr || *value == '\0') return std::nullopt;
  for (log::Level level :
       {log::Level::kDebug, log::Level::kInfo, log::Level::kWarning, log::Level::kError}) {
    if (std::string_view(value) == log::LevelName(level)) return level;
  }
  error = "BRINDLE_LOG_LEVEL is not one of debug, info, warning, error: " + std::string(value);
  return std::nullopt;
}

}  // namespace brindle::app
