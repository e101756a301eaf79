// POP3 through a tunnel: which answers are collected and filtered, and the
// answers that must not be held.
#include "core/log.h"
#include "proxy/proxy_fixture.h"

namespace brindle::proxytest {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const std::string kGreeting = "+OK pop ready\r\n";
const std::string kMail = "+OK 42 octets\r\nSubject: hi\r\n\r\nbody\r\n.\r\n";

class Pop3Test : public ProxyFixture {
 protected:
  void SetUp() override {
    Settings s;
    s.intAsianFilter = 1;
    s.intAFPercentage = 55;
    s.intAFMin = 7;
    MakeProxy(s);
    d_ = Open(Tunnel(kTypePop3, server_), server_, kGreeting);
  }
  ScriptedServer server_{io_, kGreeting};
  Dialogue d_;
};

TEST_F(Pop3Test, RetrAndTopAnswersAreFilteredOnceWhenComplete) {
  const std::string filtered =
      kMail.substr(0, kMail.size() - 5) + "{MarkAsianSpam55/7}{FixBoundary}\r\n.\r\n";
  std::string expected;
  for (const std::string command : {"retr 1\r\n", "TOP 1 10\r\n"}) {
    SCOPED_TRACE(command);
    steps_.calls.clear();
    Feed(d_.client, command);
    Feed(d_.server, kMail.substr(0, 20));
    Feed(d_.server, kMail.substr(20, kMail.size() - 22));  // ends "\r\n."
    EXPECT_EQ(d_.client->received, expected);
    Feed(d_.server, "\r\n");
    expected += filtered;
    ASSERT_TRUE(Receives(d_.client, expected));
    EXPECT_THAT(steps_.calls, ElementsAre("MarkAsianSpam55/7", "FixBoundary"));
  }
}

TEST_F(Pop3Test, ListStatAndCredentialsAreRelayedPieceByPiece) {
  log::Capture log;
  Feed(d_.client, "USER joe\r\n");
  Feed(d_.client, "PASS hunter2\r\n", "PASS ********\r\n");
  EXPECT_EQ(proxy_->Display().RecentlyTransferredData(), "PASS ********\r\n");
  Feed(d_.client, "STAT\r\n");
  Feed(d_.client, "LIST\r\n");
  ASSERT_TRUE(Receives(d_.server, "USER joe\r\nPASS hunter2\r\nSTAT\r\nLIST\r\n"));
  Feed(d_.server, "+OK 2 messages\r\n1 120\r\n");  // no terminator yet: still passes
  ASSERT_TRUE(Receives(d_.client, "+OK 2 messages\r\n1 120\r\n"));
  EXPECT_THAT(steps_.calls, IsEmpty());
  EXPECT_FALSE(log.Contains("hunter2"));
}

TEST_F(Pop3Test, RefusedRetrGoesToTheClientAtOnceAndEndsCollecting) {
  Feed(d_.client, "RETR 9\r\n");
  Feed(d_.server, "-E");  // split inside the status
  Feed(d_.server, "RR no such message\r\n");
  ASSERT_TRUE(Receives(d_.client, "-ERR no such message\r\n"));
  Feed(d_.client, "LIST\r\n");
  Feed(d_.server, "+OK\r\n");
  EXPECT_TRUE(Receives(d_.client, "-ERR no such message\r\n+OK\r\n"));
  EXPECT_THAT(steps_.calls, IsEmpty());
}

// A failing filter changes nothing itself; the message goes on whole, with
// what the filters before it did.
TEST_F(Pop3Test, FailingFilterPassesTheMessageOnWholeAndLogsIt) {
  log::Capture log;
  steps_.failIn = "FixBoundary";
  Feed(d_.client, "RETR 1\r\n");
  Feed(d_.server, kMail);
  const std::string earlier = "body{MarkAsianSpam55/7}\r\n.\r\n";
  ASSERT_TRUE(Receives(d_.client, kMail.substr(0, kMail.size() - 9) + earlier));
  EXPECT_TRUE(log.Contains("passed on as the earlier steps left it"));
  // The channel goes on normally after the failure.
  Feed(d_.client, "NOOP\r\n");
  EXPECT_TRUE(Receives(d_.server, "RETR 1\r\nNOOP\r\n"));
}

}  // namespace
}  // namespace brindle::proxytest
