// NNTP through a tunnel: posting, article downloads, the guards of the dialogue.
#include "core/log.h"
#include "proxy/proxy_fixture.h"

namespace brindle::proxytest {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const std::string kGreeting = "200 news ready\r\n";
const std::string kArticle =
    "From: a@b.example\r\nNewsgroups: test\r\nSubject: hello\r\n\r\nbody line\r\n.. "
    "dotted\r\n.\r\n";

class NntpTest : public ProxyFixture {
 protected:
  void SetUp() override {
    Settings s;
    s.intStripRef = 777;
    s.intBeginFilter = 1;
    s.intCharFiltering = 1;
    MakeProxy(s);
    port_ = Tunnel(kTypeNntp, server_);
    d_ = Open(port_, server_, kGreeting);
  }
  ScriptedServer server_{io_, kGreeting};
  uint16_t port_ = 0;
  Dialogue d_;
};

TEST_F(NntpTest, PostInManyPiecesGoesOutOnceRewrittenInOrder) {
  Feed(d_.client, "post\r\n");  // lower case still enters posting
  ASSERT_TRUE(Receives(d_.server, "post\r\n"));
  d_.server->Send("340 send article\r\n");
  ASSERT_TRUE(Receives(d_.client, "340 send article\r\n"));

  // Pieces that end with CR LF, one inside the final line, and the last one
  // splitting the terminator after "\r\n.".
  const std::string head = kArticle.substr(0, kArticle.size() - 2);
  for (size_t at = 0; at < head.size(); at += 9) Feed(d_.client, head.substr(at, 9));
  EXPECT_EQ(d_.server->received, "post\r\n") << "nothing may go out before the terminator";
  EXPECT_THAT(steps_.calls, IsEmpty());

  Feed(d_.client, "\r\n");
  const std::string expected = kArticle.substr(0, kArticle.size() - 5) +
                               "{AppendSignature}{CutReferences777}{ChangeNewsHeaders}"
                               "{InsertNewsCustomHeaders}\r\n.\r\n";
  ASSERT_TRUE(Receives(d_.server, "post\r\n" + expected));
  EXPECT_EQ(steps_.calls.size(), 4u);

  // Posting has ended: the next command is relayed as it comes.
  d_.server->Send("240 posted\r\n");
  Feed(d_.client, "GROUP test\r\n");
  EXPECT_TRUE(Receives(d_.server, "post\r\n" + expected + "GROUP test\r\n"));
}

TEST_F(NntpTest, RefusedPostLeavesPostingSoTheNextCommandIsRelayed) {
  Feed(d_.client, "POST\r\n");
  d_.server->Send("440 posting not permitted\r\n");
  ASSERT_TRUE(Receives(d_.client, "440 posting not permitted\r\n"));
  Feed(d_.client, "GROUP test\r\n");
  EXPECT_TRUE(Receives(d_.server, "POST\r\nGROUP test\r\n"));
  EXPECT_THAT(steps_.calls, IsEmpty());
}

TEST_F(NntpTest, ArticleSplitAnywhereIsFilteredOnce) {
  const std::string answer = "220 1 <a@b> article\r\n" + kArticle;
  const std::string filtered =
      answer.substr(0, answer.size() - 5) + "{FilterBegin}{FilterChars1}{FixBoundary}\r\n.\r\n";
  // Inside the status code, after it, inside the body, between "\r\n." and
  // "\r\n", and before the last byte.
  for (size_t split : {size_t{2}, size_t{4}, size_t{30}, answer.size() - 2, answer.size() - 1}) {
    SCOPED_TRACE(split);
    steps_.calls.clear();
    Dialogue d = Open(port_, server_, kGreeting);
    Feed(d.client, "ARTICLE <a@b>\r\n");
    ASSERT_TRUE(Receives(d.server, "ARTICLE <a@b>\r\n"));
    Feed(d.server, answer.substr(0, split));
    EXPECT_EQ(d.client->received, "");
    Feed(d.server, answer.substr(split));
    ASSERT_TRUE(Receives(d.client, filtered));
    EXPECT_THAT(steps_.calls, ElementsAre("FilterBegin", "FilterChars1", "FixBoundary"));
    d.client->Close();
  }
}

TEST_F(NntpTest, MissingArticlePassesAtOnceAndLeavesArticleMode) {
  Feed(d_.client, "article <gone@b>\r\n");
  Feed(d_.server, "430 no such article\r\n");
  ASSERT_TRUE(Receives(d_.client, "430 no such article\r\n"));
  // A later multi-line answer is relayed as it comes, not collected.
  Feed(d_.client, "LIST\r\n");
  Feed(d_.server, "215 list follows\r\n");
  ASSERT_TRUE(Receives(d_.client, "430 no such article\r\n215 list follows\r\n"));
  EXPECT_THAT(steps_.calls, IsEmpty());
}

TEST_F(NntpTest, AuthinfoPasswordIsRelayedButNeverShownOrLogged) {
  log::Capture log;
  Feed(d_.client, "AUTHINFO PASS s3cret!\r\n", "AUTHINFO PASS ********");
  ASSERT_TRUE(Receives(d_.server, "AUTHINFO PASS s3cret!\r\n"));
  EXPECT_EQ(proxy_->Display().RecentlyTransferredData(), "AUTHINFO PASS ********");
  EXPECT_FALSE(log.Contains("s3cret"));
}

}  // namespace
}  // namespace brindle::proxytest
