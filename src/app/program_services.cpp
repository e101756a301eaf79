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
    timer->async_wait([this, timer, deadline, done](const std::error_code& ec) {
      if (ec) return done(false);
      ProbeUntil(deadline, done);
    });
  });
}

LoadedSettings ProgramServices::LoadSettings(int16_t defaultLanguage, const TunnelSink& sink) {
  // A tunnel started while the file is read shows its error box in the
  // language in force: the settings read so far are published first.
  LoadedSettings loaded = hooks_.loadSettings(
      defaultLanguage, [this, &sink](const Settings& readSoFar, const TunnelRecord& record) {
        store_.Replace(readSoFar);
        sink(record);
      });
  store_.Replace(loaded.settings);
  return loaded;
}

}  // namespace brindle::app
