// Listed senders marked on download through real tunnels, the filter log
// lines of the changed messages (or their loss, never the message's), and a
// list edited while the proxy runs.
#include <filesystem>
#include <fstream>

#include "core/log.h"
#include "proxy/proxy_fixture.h"
#include "rewrite/filter_log.h"
#include "rewrite/temp_folder_test.h"

namespace brindle::proxytest {
namespace {

std::string Message(const std::string& status, const std::string& from) {
  return status + "\r\nFrom: " + from +
         "\r\nSubject: Offer\r\nMessage-ID: <m1@x>\r\n\r\nbody\r\n.\r\n";
}

std::string Marked(const std::string& status, const std::string& from,
                   const std::string& shown = "spammer@spam.invalid") {
  return status + "\r\nFrom: " + shown + "\r\nX-Brindle-Original-From: " + from +
         "\r\nSubject: [SPAM] Offer\r\nMessage-ID: <m1@x>\r\n\r\nbody\r\n.\r\n";
}

class SpammerTest : public ProxyFixture {
 protected:
  void SetUp() override {
    Settings s;
    s.strSpammers = (dir_ / "spammers.txt").string();
    s.strLog = (dir_ / "filtered.log").string();
    s.strSpammerAddress = "spammer@spam.invalid";
    WriteList("@spam.example\n");
    MakeProxy(s, true);
    news_ = Open(Tunnel(kTypeNntp, newsServer_), newsServer_, "200 news\r\n");
    mail_ = Open(Tunnel(kTypePop3, mailServer_), mailServer_, "+OK pop\r\n");
  }

  void WriteList(const std::string& text) {
    std::ofstream(dir_ / "spammers.txt", std::ios::binary) << text;
  }
  // The article as the news client receives it.
  std::string Article(const std::string& from) {
    news_.client->received.clear();
    Feed(news_.client, "ARTICLE 1\r\n");
    Feed(news_.server, Message("220 1 <m1@x>", from));
    RunUntil(io_, [&] { return news_.client->received.ends_with("\r\n.\r\n"); });
    return news_.client->received;
  }

  testing_support::TempFolder temp_;
  const std::filesystem::path dir_ = temp_.Path();
  ScriptedServer newsServer_{io_, "200 news\r\n"};
  ScriptedServer mailServer_{io_, "+OK pop\r\n"};
  Dialogue news_, mail_;
};

TEST_F(SpammerTest, ListedSendersAreMarkedInBothProtocolsAndLogged) {
  EXPECT_EQ(Article("Joe <joe@SPAM.example>"),
            Marked("220 1 <m1@x>", "Joe <joe@SPAM.example>", "Joe <spammer@spam.invalid>"));
  EXPECT_EQ(Article("ann@fine.example"), Message("220 1 <m1@x>", "ann@fine.example"));

  Feed(mail_.client, "RETR 1\r\n");
  Feed(mail_.server, Message("+OK", "bob@spam.example"));
  EXPECT_TRUE(Receives(mail_.client, Marked("+OK", "bob@spam.example")));

  // One line per changed message, written after the message went on.
  const std::string log = (dir_ / "filtered.log").string();
  ASSERT_TRUE(RunUntil(io_, [&] { return FilterLogTail(log, 5).size() == 2; }));
  const auto lines = FilterLogTail(log, 5);
  const auto news = ParseFilterLogLine(lines[0]);
  const auto mail = ParseFilterLogLine(lines[1]);
  ASSERT_TRUE(news && mail);
  EXPECT_TRUE(news->tunnel.starts_with("NNTP ")) << news->tunnel;
  EXPECT_TRUE(mail->tunnel.starts_with("POP3 ")) << mail->tunnel;
  EXPECT_EQ(news->messageId, "<m1@x>");
  EXPECT_EQ(news->sender, "joe@SPAM.example");
  EXPECT_EQ(mail->subject, "[SPAM] Offer");
  EXPECT_EQ(mail->changes.Names(), "spammer list");
}

TEST_F(SpammerTest, ALogThatCannotBeWrittenHoldsNoMessageBack) {
  log::Capture log;
  const auto logPath = dir_ / "filtered.log";
  std::filesystem::create_directory(logPath);  // nothing can be appended there
  for (int i = 0; i < 2; ++i) {
    EXPECT_NE(Article("joe@spam.example").find("[SPAM] Offer"), std::string::npos);
  }
  ASSERT_TRUE(RunUntil(io_, [&] { return log.Contains("cannot be written"); }));
  std::filesystem::remove(logPath);
  Article("joe@spam.example");
  ASSERT_TRUE(RunUntil(io_, [&] { return log.Contains("is written again"); }));
  EXPECT_EQ(FilterLogTail(logPath.string(), 5).size(), 1u);
  const std::string text = log.Text();
  EXPECT_EQ(text.find("cannot be written"), text.rfind("cannot be written"));  // said once
}

TEST_F(SpammerTest, AListEditedOnDiskTakesEffectWithoutARestart) {
  log::Capture log;
  WriteList("# moved on\nann@fine.example\n@other.example\n");
  ASSERT_TRUE(RunUntil(io_, [&] { return log.Contains(": 2 entries"); }));
  EXPECT_EQ(Article("joe@spam.example"), Message("220 1 <m1@x>", "joe@spam.example"));
  EXPECT_NE(Article("ann@fine.example").find("[SPAM] Offer"), std::string::npos);
  std::filesystem::remove(dir_ / "spammers.txt");  // no list: nothing is marked
  ASSERT_TRUE(RunUntil(io_, [&] { return log.Contains(": 0 entries"); }));
  EXPECT_EQ(Article("ann@fine.example"), Message("220 1 <m1@x>", "ann@fine.example"));
}

}  // namespace
}  // namespace brindle::proxytest
