// One channel fed directly, piece by piece: pipelined commands and answers
// split or joined anywhere, the EHLO answer without CHUNKING, the limits,
// and a client's switch to TLS.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/log.h"
#include "proxy/channel.h"
#include "proxy/host_name.h"
#include "proxy/proxy_test_support.h"

namespace brindle::proxytest {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct Rig {
  explicit Rig(int32_t type, Settings s = {}, ChannelLimits limits = {})
      : settings(std::move(s)),
        records(std::make_shared<FilterRecords>(io, settings, std::chrono::hours(1))),
        channel(7, {settings, steps, display, *records}, limits) {
    channel.cType(type);
  }
  // Feeds `text` in pieces cut at `cuts` (offsets, ascending); returns all output.
  std::string Server(const std::string& text, const std::vector<size_t>& cuts = {}) {
    return Feed(text, cuts, false);
  }
  std::string Client(const std::string& text, const std::vector<size_t>& cuts = {}) {
    return Feed(text, cuts, true);
  }
  std::string Feed(const std::string& text, const std::vector<size_t>& cuts, bool client) {
    std::string out;
    size_t from = 0;
    std::vector<size_t> ends = cuts;
    ends.push_back(text.size());
    for (size_t end : ends) {
      std::string piece = text.substr(from, end - from);
      out += client ? channel.ProcessClientData(piece) : channel.ProcessServerData(piece);
      from = end;
    }
    return out;
  }

  SettingsStore settings;
  RecordingSteps steps;
  TransferDisplay display;
  asio::io_context io;
  std::shared_ptr<FilterRecords> records;
  CChannel channel;
};

std::string Article(int n) {
  return "220 " + std::to_string(n) + " <" + std::to_string(n) +
         "@x> article\r\nSubject: n\r\n\r\nbody " + std::to_string(n) + "\r\n.. dot\r\n.\r\n";
}

std::string Filtered(const std::string& answer, const std::string& marks) {
  return answer.substr(0, answer.size() - 5) + marks + "\r\n.\r\n";
}

TEST(ChannelTest, PipelinedArticlesAreFilteredEachOnItsOwnHoweverTheAnswersAreCut) {
  const std::string answers = "200 ready\r\n211 3 1 3 test\r\n" + Article(1) +
                              "430 no such article\r\n" + Article(3) + "215 list\r\n220 x\r\n.\r\n";
  const std::string marks = "{FilterBegin}{FilterChars1}{FixBoundary}";
  const std::string expected = "200 ready\r\n211 3 1 3 test\r\n" + Filtered(Article(1), marks) +
                               "430 no such article\r\n" + Filtered(Article(3), marks) +
                               "215 list\r\n220 x\r\n.\r\n";
  Settings s;
  s.intCharFiltering = 1;
  // Every single cut, and pairs of cuts at awkward distances.
  std::vector<std::vector<size_t>> cutsList;
  for (size_t a = 1; a < answers.size(); ++a) cutsList.push_back({a});
  for (size_t a = 1; a + 3 < answers.size(); a += 7) cutsList.push_back({a, a + 3});
  for (const auto& cuts : cutsList) {
    SCOPED_TRACE(cuts.front());
    Rig rig(kTypeNntp, s);
    const std::string commands =
        "GROUP test\r\nARTICLE 1\r\nARTICLE 2\r\narticle <3@x>\r\nLIST\r\n";
    ASSERT_EQ(rig.Client(commands), commands);
    EXPECT_EQ(rig.channel.StateName(), std::string("collecting"));
    ASSERT_EQ(rig.Server(answers, cuts), expected);
    EXPECT_EQ(rig.steps.calls.size(), 6u);
    EXPECT_EQ(rig.channel.StateName(), std::string("relaying"));
  }
}

TEST(ChannelTest, PipelinedRetrAfterAListIsFilteredPerMail) {
  const std::string mail = "+OK\r\nSubject: m\r\n\r\n+OK not a status\r\n.\r\n";
  const std::string answers =
      "+OK pop\r\n+OK 3\r\n1 10\r\n+OK 2\r\n.\r\n" + mail + "-ERR no such message\r\n" + mail;
  Settings s;
  s.intAsianFilter = 1;
  const std::string marked = Filtered(mail, "{MarkAsianSpam90/10}{FixBoundary}");
  for (size_t cut = 1; cut < answers.size(); ++cut) {
    SCOPED_TRACE(cut);
    Rig rig(kTypePop3, s);
    rig.Client("LIST\r\nRETR 1\r\nRETR 2\r\nTOP 3 0\r\n", {3, 9});
    EXPECT_EQ(rig.Server(answers, {cut}), "+OK pop\r\n+OK 3\r\n1 10\r\n+OK 2\r\n.\r\n" + marked +
                                              "-ERR no such message\r\n" + marked);
    EXPECT_EQ(rig.steps.calls.size(), 4u);
  }
}

TEST(ChannelTest, EhloAnswerLosesChunkingAndEveryMailGoesThroughDataRewritten) {
  Rig rig(kTypeSmtp);
  EXPECT_EQ(rig.Server("220 mx\r\n"), "220 mx\r\n");
  rig.Client("EHLO pc\r\n");
  EXPECT_EQ(rig.Server("250-mx\r\n250-CHUNKING\r\n250-PIPELINING\r\n250 BINARYMIME\r\n", {12, 30}),
            "250-mx\r\n250 PIPELINING\r\n");
  rig.Client("MAIL FROM:<a@b>\r\nRCPT TO:<c@d>\r\nDATA\r\n");
  EXPECT_EQ(rig.channel.StateName(), std::string("sending mail"));
  EXPECT_EQ(rig.Server("250 ok\r\n250 ok\r\n354 go\r\n"), "250 ok\r\n250 ok\r\n354 go\r\n");
  // The mail, the end of mail and the next commands in one write.
  EXPECT_EQ(rig.Client("Subject: s\r\n\r\nhi\r\n.\r\nQUIT\r\n"),
            "Subject: s\r\n\r\nhi{ChangeMailHeaders}{InsertMailCustomHeaders}\r\n.\r\nQUIT\r\n");
  EXPECT_THAT(rig.steps.calls, ElementsAre("ChangeMailHeaders", "InsertMailCustomHeaders"));
}

TEST(ChannelTest, OnlyAGreetingFirstCommandIsReplacedAndABareHostGivesItsAddress) {
  Settings s;
  s.intFQDN = 1;
  Rig quitFirst(kTypeSmtp, s);
  EXPECT_EQ(quitFirst.Client("QUIT\r\n"), "QUIT\r\n");
  EXPECT_EQ(quitFirst.Client("EHLO pc\r\n"), "EHLO pc\r\n");

  Rig heloFirst(kTypeSmtp, s);
  heloFirst.channel.ServerConnected("192.0.2.7");
  const std::string name = EhloName(HostFullName(), "[192.0.2.7]");
  EXPECT_EQ(heloFirst.Client("helo pc\r\n"), "EHLO " + name + "\r\n");

  EXPECT_EQ(EhloName("pc.example.org", "[192.0.2.7]"), "pc.example.org");
  EXPECT_EQ(EhloName("pc", "[IPv6:::1]"), "[IPv6:::1]");
}

TEST(ChannelTest, AnOverLongCommandLineEndsTheChannelWithTheProtocolsAnswer) {
  ChannelLimits limits;
  limits.longestCommandLine = 64;
  for (auto [type, answer] :
       {std::pair{kTypeNntp, "501 "}, {kTypePop3, "-ERR "}, {kTypeSmtp, "500 "}}) {
    log::Capture log;
    Rig rig(type, {}, limits);
    EXPECT_EQ(rig.Client("NOOP\r\n"), "NOOP\r\n");
    EXPECT_EQ(rig.Client(std::string(60, 'x') + "\r\n"), std::string(60, 'x') + "\r\n");
    EXPECT_EQ(rig.Client(std::string(40, 'y'), {}), "");
    EXPECT_FALSE(rig.channel.Ending());
    EXPECT_EQ(rig.Client(std::string(40, 'y')), "");
    EXPECT_TRUE(rig.channel.Ending());
    EXPECT_TRUE(rig.channel.Farewell().starts_with(answer));
    EXPECT_TRUE(log.Contains("BRINDLE_MAX_COMMAND_LINE"));
  }
}

TEST(ChannelTest, AMessageOverTheHeldLimitPassesUnprocessedAndTheNextIsFilteredAgain) {
  ChannelLimits limits;
  limits.largestHeldMessage = 100;
  Rig rig(kTypePop3, {}, limits);
  log::Capture log;
  const std::string big = "+OK\r\n" + std::string(150, 'b') + "\r\n.\r\n";
  const std::string small = "+OK\r\nsmall\r\n.\r\n";
  rig.Client("RETR 1\r\nRETR 2\r\n");
  EXPECT_EQ(rig.Server("+OK pop\r\n" + big + small, {60, 120, 170}),
            "+OK pop\r\n" + big + Filtered(small, "{FixBoundary}"));
  EXPECT_THAT(rig.steps.calls, ElementsAre("FixBoundary"));
  EXPECT_TRUE(log.Contains("passes on unprocessed"));

  Rig post(kTypeNntp, {}, limits);
  post.Client("POST\r\n");
  post.Server("200 ready\r\n340 send\r\n");
  const std::string article = "Subject: s\r\n\r\n" + std::string(200, 'a') + "\r\n.\r\n";
  EXPECT_EQ(post.Client(article, {50, 99, 101}), article);
  EXPECT_THAT(post.steps.calls, IsEmpty());
  EXPECT_EQ(post.channel.StateName(), std::string("relaying"));
}

TEST(ChannelTest, AClientSwitchToTlsIsFlaggedAndLoggedOnce) {
  Rig rig(kTypeSmtp);
  log::Capture log;
  rig.Server("220 mx\r\n");
  rig.Client("EHLO pc\r\nSTARTTLS\r\n");
  EXPECT_FALSE(rig.channel.PassesUnprocessed());
  EXPECT_EQ(rig.Server("250 mx\r\n220 go ahead\r\n\x16\x03"), "250 mx\r\n220 go ahead\r\n\x16\x03");
  EXPECT_TRUE(rig.channel.PassesUnprocessed());
  EXPECT_EQ(rig.Client("DATA\r\n\x16"), "DATA\r\n\x16");
  EXPECT_EQ(rig.Server("354 x\r\n"), "354 x\r\n");
  EXPECT_EQ(rig.Client("a\r\n.\r\n"), "a\r\n.\r\n");
  EXPECT_THAT(rig.steps.calls, IsEmpty());
  const std::string text = log.Text();
  EXPECT_NE(text.find("pass unprocessed"), std::string::npos);
  EXPECT_EQ(text.find("pass unprocessed"), text.rfind("pass unprocessed"));
}

TEST(ChannelTest, AGigabyteListAnswerPassesWithoutAByteChanged) {
  Rig rig(kTypeNntp);
  rig.Server("200 ready\r\n");
  rig.Client("LIST\r\n");
  EXPECT_EQ(rig.Server("215 list follows\r\n"), "215 list follows\r\n");
  // Lines of every byte value but "." (so no line ends the answer), cut
  // anywhere by the pieces.
  std::string piece(64 * 1024 + 7, 'x');
  uint32_t state = 1;
  for (char& c : piece) {
    state = state * 1664525u + 1013904223u;
    c = static_cast<char>(state >> 24);
    if (c == '.') c = '\n';
  }
  bool same = true;
  for (size_t total = 0; total < (size_t{1} << 30); total += piece.size()) {
    same = same && rig.channel.ProcessServerData(piece) == piece;
  }
  EXPECT_TRUE(same);
  EXPECT_EQ(rig.Server("\r\n.\r\n"), "\r\n.\r\n");
  EXPECT_EQ(rig.channel.StateName(), std::string("relaying"));
}

}  // namespace
}  // namespace brindle::proxytest
