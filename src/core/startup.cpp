#include "core/startup.h"

#include <utility>

#include "core/log.h"
#include "core/message_box.h"

namespace brindle {
namespace {

// Collects the tunnels' start results; the report goes out when the loader
// has finished and the last AutoStart tunnel has answered, whichever is later.
struct Progress {
  StartupReport report;
  int pending = 1;  // the loading itself
  std::function<void(std::optional<StartupReport>)> done;

  void Settle() {
    if (--pending == 0 && done) std::exchange(done, nullptr)(std::move(report));
  }
};

void LoadAfterProbe(StartupServices& services, bool up,
                    std::function<void(std::optional<StartupReport>)> done) {
  log::Info(up ? "companion answering" : "companion not answering on its control port");
  auto progress = std::make_shared<Progress>();
  progress->done = std::move(done);
  progress->report.companionAnswered = up;
  progress->report.defaultLanguage = services.DefaultLanguage();

  TunnelSink sink = [&services, progress](const TunnelRecord& record, const Settings&) {
    const size_t index = progress->report.tunnels.size();
    progress->report.tunnels.push_back({record, TunnelOutcome::State::kStopped, 0});
    if (!record.AutoStart) {
      services.AddTunnel(record, nullptr);
      return;
    }
    ++progress->pending;
    services.AddTunnel(record, [progress, index](int error) {
      TunnelOutcome& outcome = progress->report.tunnels[index];
      outcome.error = error;
      outcome.state = error == 0 ? TunnelOutcome::State::kListening : TunnelOutcome::State::kFailed;
      progress->Settle();
    });
  };
  LoadedSettings loaded = services.LoadSettings(progress->report.defaultLanguage, sink);
  progress->report.settingsFile = std::move(loaded.sourceFile);
  progress->report.migrated = loaded.Migrated();
  progress->report.settings = std::move(loaded.settings);
  progress->Settle();
}

}  // namespace

std::string CompanionMissingText(const std::string& companionFileName) {
  return companionFileName + " not found.";
}

void RunLoadSequence(StartupServices& services,
                     std::function<void(std::optional<StartupReport>)> done) {
  if (!services.LaunchCompanion()) {
    ShowMessageBox(CompanionMissingText(services.CompanionFileName()), kCompanionMissingTitle,
                   BoxIcon::kCritical);
    done(std::nullopt);
    return;
  }
  services.ProbeCompanion([&services, done = std::move(done)](bool up) mutable {
    LoadAfterProbe(services, up, std::move(done));
  });
}

}  // namespace brindle
