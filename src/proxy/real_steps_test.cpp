// The program's own rewriting steps wired into a channel.
#include "proxy/proxy_fixture.h"

namespace brindle::proxytest {
namespace {

class RealStepsTest : public ProxyFixture {};

TEST_F(RealStepsTest, PostedArticleGetsTheConfiguredHeaders) {
  Settings s;
  s.intXNewsreader = 1;
  s.strXNewsreader = "Brindle Reader";
  s.newsHeaders[0] = {"X-Extra", "Subject", "yes"};
  MakeProxy(s, true);
  ScriptedServer server{io_, "200 ok\r\n"};
  Dialogue d = Open(Tunnel(kTypeNntp, server), server, "200 ok\r\n");
  Feed(d.client, "POST\r\n");
  Feed(d.server, "340 go\r\n");
  Feed(d.client, "From: a@b\r\nSubject: s\r\nX-Newsreader: OE 6\r\n\r\ntext\r\n.\r\n");
  EXPECT_TRUE(Receives(d.server,
                       "POST\r\nFrom: a@b\r\nSubject: s\r\nX-Extra: yes\r\n"
                       "X-Newsreader: Brindle Reader\r\n\r\ntext\r\n.\r\n"))
      << d.server->received;
}

}  // namespace
}  // namespace brindle::proxytest
