// SslBridge: the TLS companion. Started by the program without arguments;
// see README.md for its options and its configuration file.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include <asio/io_context.hpp>
#include <asio/signal_set.hpp>

#include "core/event_log.h"
#include "core/log.h"
#include "core/settings_paths.h"
#include "localnet/control_key.h"
#include "sslbridge/bridge.h"

using namespace brindle;
using namespace brindle::sslbridge;

namespace {

const char kUsage[] =
    "usage: SslBridge [--control-port N] [--ca-file FILE]... [--insecure-host HOST]...\n"
    "                 [--config FILE]\n";

// The settings folder the program uses, as it handed it over; without it
// (the companion started by hand) the user's default settings folder.
std::string SettingsDir() {
  if (const char* dir = std::getenv(kSettingsFolderVariable); dir && *dir) return dir;
  return SettingsFolderIn(ApplicationDataFolder());
}

// Reads one configuration file if it exists and says whether it did;
// `required` makes a missing one an error.
bool ReadConfig(const std::string& file, bool required, BridgeOptions& options) {
  std::ifstream in(file, std::ios::binary);
  if (!in) {
    if (required) log::Error("configuration file " + file + " cannot be read");
    return false;
  }
  std::stringstream text;
  text << in.rdbuf();
  log::Info("configuration read from " + file);
  for (const auto& problem : ApplyConfigText(text.str(), options)) {
    log::Warning(file + ": " + problem);
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  event_log::SetSourceName("SslBridge");
  log::SetSink(event_log::SystemLogSink(true));
  CommandLine cl = ParseCommandLine(argc, argv);
  if (cl.help || !cl.error.empty()) {
    if (!cl.error.empty()) std::fprintf(stderr, "SslBridge: %s\n", cl.error.c_str());
    std::fputs(kUsage, stderr);
    return cl.help ? 0 : 2;
  }
  BridgeOptions options;
  if (cl.configFile) {
    if (!ReadConfig(*cl.configFile, true, options)) return 2;
  } else {
    bool any = false;
    std::string looked;
    for (const auto& file : ConfigFileCandidates(ProgramFolder(), SettingsDir())) {
      if (ReadConfig(file, false, options)) any = true;
      looked += (looked.empty() ? "" : ", ") + file;
    }
    if (!any) log::Info("no configuration file read (looked for " + looked + ")");
  }
  if (const char* env = std::getenv(kControlPortVariable); env && *env) {
    if (auto port = ParsePort(env)) {
      options.controlPort = *port;
    } else {
      log::Warning(std::string(kControlPortVariable) + " ignored, not a port: " + env);
    }
  }
  if (cl.controlPort) options.controlPort = *cl.controlPort;
  if (const char* key = std::getenv(localnet::kControlKeyVariable); key && *key) {
    options.controlKey = key;
  }
  options.caFiles.insert(options.caFiles.end(), cl.caFiles.begin(), cl.caFiles.end());
  options.insecureHosts.insert(options.insecureHosts.end(), cl.insecureHosts.begin(),
                               cl.insecureHosts.end());

  asio::io_context io;
  Bridge bridge(io, options);
  if (bridge.Open()) return 1;
  asio::signal_set signals(io, SIGINT, SIGTERM);
  signals.async_wait([&](std::error_code ec, int) {
    if (ec) return;
    log::Info("signal received, ending");
    bridge.Stop();
  });
  // QUIT must end the run although the signal wait is still armed.
  bridge.OnStopped([&] { signals.cancel(); });
  io.run();
  return 0;
}
