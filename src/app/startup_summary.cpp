#include "app/startup_summary.h"

namespace brindle::app {
namespace {

std::string StateText(const TunnelOutcome& outcome) {
  switch (outcome.state) {
    case TunnelOutcome::State::kListening:
      return "listening";
    case TunnelOutcome::State::kFailed:
      return "failed (error " + std::to_string(outcome.error) + ")";
    case TunnelOutcome::State::kStopped:
      break;
  }
  return "not started (AutoStart off)";
}

}  // namespace

std::string TunnelLine(const TunnelOutcome& outcome) {
  const TunnelRecord& r = outcome.record;
  return std::string(ProtocolName(r.tType)) + " 127.0.0.1:" + std::to_string(r.SrcPort) + " -> " +
         r.Server + ":" + std::to_string(r.DestPort) + (r.SSL ? " TLS" : " plain") + ": " +
         StateText(outcome);
}

std::string StartupSummary(const StartupReport& report, const std::string& companionFileName,
                           uint16_t companionControlPort) {
  std::string text = "settings: ";
  if (report.settingsFile.empty())
    text += "none, defaults";
  else
    text += report.settingsFile + (report.migrated ? " (older file, migrated)" : "");
  text += "\ncompanion: " + companionFileName +
          (report.companionAnswered ? " answering on 127.0.0.1:" : " not answering on 127.0.0.1:") +
          std::to_string(companionControlPort) + "\n";
  if (report.tunnels.empty()) text += "tunnels: none\n";
  for (const TunnelOutcome& outcome : report.tunnels)
    text += "tunnel " + TunnelLine(outcome) + "\n";
  return text;
}

}  // namespace brindle::app
