#include "app/program_services.h"

#include <memory>

#include <asio/steady_timer.hpp>

namespace brindle::app {

namespace {
// The companion was only just started: a refused connection may mean it is
// not listening yet, so the probe is repeated until it answers or this much
// time has passed since the first try.
constexpr std::chrono::seconds kProbeLimit{3};
constexpr std::chrono::milliseconds kProbeRetry{100};
}  // namespace

void ProgramServices::ProbeCompanion(std::function<void(bool)> done) {
  ProbeUntil(std::chrono::steady_clock::now() + kProbeLimit, std::move(done));
}

void ProgramServices::ProbeUntil(std::chrono::steady_clock::time_point deadline,
                                 std::function<void(bool)> done) {
  proxy_.ProbeCompanion([this, deadline, done = std::move(done)](bool up) {
    if (up || std::chrono::steady_clock::now() >= deadline) return done(up);
    auto timer = std::make_shared<asio::steady_timer>(io_, kProbeRetry);
    std::weak_ptr<int> alive = alive_;
    timer->async_wait([this, alive, timer, deadline, done](const std::error_code& ec) {
      if (alive.expired()) return;
      if (ec) return done(false);
      ProbeUntil(deadline, done);
    });
  });
}

LoadedSettings ProgramServices::LoadSettings(int16_t defaultLanguage, const TunnelSink& sink) {
  LoadedSettings loaded = FindAndLoadSettings(
      hooks_.settingsPlaces, defaultLanguage,
      [this, &sink](const TunnelRecord& record, const Settings& readSoFar) {
        PublishLanguage(readSoFar.intLanguage);
        sink(record, readSoFar);
      },
      hooks_.stopLoading);
  store_.Replace(loaded.settings);
  return loaded;
}

// A tunnel started while the file is read shows its error box in the
// language in force; nothing else reads the settings before the load ends.
// Only the language is published, and only when it changes: a copy of
// everything read so far per tunnel made loading quadratic in the tunnels.
void ProgramServices::PublishLanguage(int16_t language) {
  std::shared_ptr<const Settings> current = store_.Current();
  if (current->intLanguage == language) return;
  Settings next = *current;
  next.intLanguage = language;
  store_.Replace(std::move(next));
}

}  // namespace brindle::app
