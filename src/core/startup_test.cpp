#include "core/startup.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/message_box.h"

namespace brindle {
namespace {

using ::testing::ElementsAre;

TunnelRecord Record(const char* server, int32_t port, bool autoStart, int32_t type = kTypeNntp) {
  TunnelRecord r;
  r.Server = server;
  r.SrcPort = port;
  r.DestPort = 119;
  r.AutoStart = autoStart;
  r.tType = type;
  return r;
}

// Records every call; tunnel starts are answered later, by the test, the way
// an SSL tunnel answers only after its route exchange.
class FakeServices : public StartupServices {
 public:
  std::vector<std::string> calls;
  bool companionStarts = true;
  bool companionUp = true;
  bool answerAtOnce = false;  // a plain tunnel answers inside AddTunnel
  std::vector<TunnelRecord> file;
  std::vector<std::function<void(int)>> pendingStarts;

  std::string CompanionFileName() const override { return "SslBridge.exe"; }
  bool LaunchCompanion() override {
    calls.push_back("launch");
    return companionStarts;
  }
  void ProbeCompanion(std::function<void(bool)> done) override {
    calls.push_back("probe");
    done(companionUp);
  }
  int16_t DefaultLanguage() override {
    calls.push_back("language");
    return kLangGerman;
  }
  LoadedSettings LoadSettings(int16_t language, const TunnelSink& sink) override {
    calls.push_back("load " + std::to_string(language));
    LoadedSettings loaded;
    loaded.sourceFile = "/cfg/OE_Brindle.ini";
    for (const TunnelRecord& r : file) {
      loaded.settings.tunnels.push_back(r);
      sink(r, loaded.settings);
    }
    calls.push_back("loaded");
    return loaded;
  }
  void AddTunnel(const TunnelRecord& r, std::function<void(int)> started) override {
    calls.push_back("add " + r.Server + (started ? " awaited" : ""));
    if (started && answerAtOnce)
      started(0);
    else if (started)
      pendingStarts.push_back(std::move(started));
  }
};

TEST(LoadSequence, RunsInOrderAndReportsOnceEveryAutoStartTunnelHasAnswered) {
  FakeServices services;
  services.file = {Record("news", 1119, true), Record("pop", 1110, false, kTypePop3),
                   Record("smtp", 1025, true, kTypeSmtp)};
  std::vector<std::optional<StartupReport>> reports;
  RunLoadSequence(services, [&](std::optional<StartupReport> r) { reports.push_back(r); });

  // Tunnels are created while the file is read, not after it.
  EXPECT_THAT(services.calls,
              ElementsAre("launch", "probe", "language", "load 3000", "add news awaited", "add pop",
                          "add smtp awaited", "loaded"));
  ASSERT_EQ(services.pendingStarts.size(), 2u);
  services.pendingStarts[1](10048);  // out of order: the report must still match by tunnel
  EXPECT_TRUE(reports.empty());
  services.pendingStarts[0](0);
  ASSERT_EQ(reports.size(), 1u);
  ASSERT_TRUE(reports[0].has_value());
  const StartupReport& report = *reports[0];
  EXPECT_TRUE(report.companionAnswered);
  EXPECT_EQ(report.settingsFile, "/cfg/OE_Brindle.ini");
  EXPECT_EQ(report.settings.tunnels.size(), 3u);
  ASSERT_EQ(report.tunnels.size(), 3u);
  EXPECT_EQ(report.tunnels[0].state, TunnelOutcome::State::kListening);
  EXPECT_EQ(report.tunnels[1].state, TunnelOutcome::State::kStopped);
  EXPECT_EQ(report.tunnels[2].state, TunnelOutcome::State::kFailed);
  EXPECT_EQ(report.tunnels[2].error, 10048);
}

TEST(LoadSequence, ReportsOnceWhenTunnelsAnswerInsideTheLoaderOrThereAreNone) {
  for (bool withTunnels : {true, false}) {
    FakeServices services;
    services.answerAtOnce = true;
    services.companionUp = false;  // a silent companion does not stop start-up
    if (withTunnels) services.file = {Record("a", 1, true), Record("b", 2, true)};
    int reports = 0;
    RunLoadSequence(services, [&](std::optional<StartupReport> r) {
      ++reports;
      ASSERT_TRUE(r.has_value());
      EXPECT_FALSE(r->companionAnswered);
      // The report is complete: it is sent after the loader has returned.
      EXPECT_EQ(r->settingsFile, "/cfg/OE_Brindle.ini");
      EXPECT_EQ(r->tunnels.size(), withTunnels ? 2u : 0u);
    });
    EXPECT_EQ(reports, 1) << "with tunnels: " << withTunnels;
  }
}

TEST(LoadSequence, MissingCompanionShowsItsBoxAndEndsBeforeAnythingElse) {
  MessageBoxCapture boxes;
  FakeServices services;
  services.companionStarts = false;
  services.file = {Record("news", 1119, true)};
  std::vector<std::optional<StartupReport>> reports;
  RunLoadSequence(services, [&](std::optional<StartupReport> r) { reports.push_back(r); });

  EXPECT_THAT(services.calls, ElementsAre("launch"));
  ASSERT_EQ(reports.size(), 1u);
  EXPECT_FALSE(reports[0].has_value());
  ASSERT_EQ(boxes.Boxes().size(), 1u);
  EXPECT_EQ(boxes.Boxes()[0].text, "SslBridge.exe not found.");
  EXPECT_EQ(boxes.Boxes()[0].title, "File not found.");
}

}  // namespace
}  // namespace brindle
