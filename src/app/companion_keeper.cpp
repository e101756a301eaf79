#include "app/companion_keeper.h"

#include <algorithm>
#include <string>

#include "core/log.h"

namespace brindle::app {

void CompanionKeeper::Ended(int status) {
  if (stopped_) return;
  if (std::chrono::steady_clock::now() - started_ >= kRanLongEnough) wait_ = kRestartFirst;
  const auto wait = wait_;
  wait_ = std::min(wait_ * 2, kRestartLongest);
  log::Warning("companion ended early, status " + std::to_string(status) +
               "; starting it again in " + std::to_string(wait.count()) + " s");
  timer_.expires_after(wait);
  timer_.async_wait([this, status](const std::error_code& ec) {
    if (ec || stopped_) return;
    if (!launch_()) return Ended(status);
    services_.ProbeCompanion([this](bool up) {
      if (stopped_) return;
      if (!up) log::Warning("companion started again but not answering yet");
      proxy_.RestoreRoutes([] { log::Info("companion started again, routes restored"); });
    });
  });
}

void CompanionKeeper::Stop() {
  stopped_ = true;
  timer_.cancel();
}

}  // namespace brindle::app
