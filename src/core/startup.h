// The load of the main form: everything the program prepares before the
// client runs, in a fixed order. The companion comes first, so that it is
// listening before any tunnel registers a route with it; the settings come
// next, and each tunnel is created (and, when marked AutoStart, started) the
// moment the loader has read its record. The steps reach the platform and the
// other subsystems only through StartupServices, so the order can be driven
// by tests.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/settings.h"
#include "core/settings_migration.h"

namespace brindle {

class StartupServices {
 public:
  virtual ~StartupServices() = default;

  // The companion's file name on this platform ("SslBridge.exe", "SslBridge").
  virtual std::string CompanionFileName() const = 0;
  // Starts the companion from the program's folder; false when it cannot be started.
  virtual bool LaunchCompanion() = 0;
  // Is the companion answering on its control port? Calls `done` exactly once.
  virtual void ProbeCompanion(std::function<void(bool up)> done) = 0;
  // The language base of the user's own language.
  virtual int16_t DefaultLanguage() = 0;
  // Settings folder, defaults, then the settings file read or an older one
  // migrated. `sink` gets every tunnel record as soon as it is complete.
  virtual LoadedSettings LoadSettings(int16_t defaultLanguage, const TunnelSink& sink) = 0;
  // Creates a tunnel; when the record says AutoStart, `started` gets the
  // start's error number (0 = listening) once the start has finished.
  virtual void AddTunnel(const TunnelRecord& record, std::function<void(int error)> started) = 0;
};

// How each tunnel came out of start-up, in settings order.
struct TunnelOutcome {
  enum class State { kStopped, kListening, kFailed };
  TunnelRecord record;
  State state = State::kStopped;
  int error = 0;
};

struct StartupReport {
  bool companionAnswered = false;
  int16_t defaultLanguage = 0;
  std::string settingsFile;  // empty: none, defaults
  bool migrated = false;
  Settings settings;
  std::vector<TunnelOutcome> tunnels;
};

// Runs the load sequence. `done` gets the report once every AutoStart tunnel
// has reported its start, or nothing when the program must end (the
// companion could not be started; its box has been shown by then).
void RunLoadSequence(StartupServices& services,
                     std::function<void(std::optional<StartupReport>)> done);

// The box text for a companion that cannot be started ("SslBridge.exe not found.").
std::string CompanionMissingText(const std::string& companionFileName);
inline constexpr const char* kCompanionMissingTitle = "File not found.";

}  // namespace brindle
