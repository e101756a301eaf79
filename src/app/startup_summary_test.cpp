#include "app/startup_summary.h"

#include <gtest/gtest.h>

namespace brindle::app {
namespace {

TEST(StartupSummary, NamesTheFileTheCompanionAndEveryTunnel) {
  StartupReport report;
  report.companionAnswered = false;
  TunnelRecord news{"news.example.com", 1119, 119, true, false, kTypeNntp};
  TunnelRecord pop{"pop.example.com", 1110, 995, true, true, kTypePop3};
  TunnelRecord smtp{"smtp.example.com", 1025, 25, false, false, kTypeSmtp};
  report.tunnels = {{news, TunnelOutcome::State::kListening, 0},
                    {pop, TunnelOutcome::State::kFailed, 10048},
                    {smtp, TunnelOutcome::State::kStopped, 0}};
  EXPECT_EQ(
      StartupSummary(report, "SslBridge", 5555),
      "settings: none, defaults\n"
      "companion: SslBridge not answering on 127.0.0.1:5555\n"
      "tunnel NNTP 127.0.0.1:1119 -> news.example.com:119 plain: listening\n"
      "tunnel POP3 127.0.0.1:1110 -> pop.example.com:995 TLS: failed (error 10048)\n"
      "tunnel SMTP 127.0.0.1:1025 -> smtp.example.com:25 plain: not started (AutoStart off)\n");

  report.tunnels.clear();
  report.settingsFile = "/opt/brindle/OE_Brindle.ini";
  report.migrated = true;
  report.companionAnswered = true;
  EXPECT_EQ(StartupSummary(report, "SslBridge", 40000),
            "settings: /opt/brindle/OE_Brindle.ini (older file, migrated)\n"
            "companion: SslBridge answering on 127.0.0.1:40000\n"
            "tunnels: none\n");
}

}  // namespace
}  // namespace brindle::app
