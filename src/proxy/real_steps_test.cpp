// The program's own rewriting steps wired into a channel, and the tunnel box
// in the user's language.
#include "core/language.h"
#include "core/message_box.h"
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

TEST_F(RealStepsTest, StartErrorBoxSpeaksTheUsersLanguage) {
  Settings s;
  s.intLanguage = kLangGerman;
  MakeProxy(s);
  MessageBoxCapture boxes;
  asio::ip::tcp::acceptor taken(io_, {asio::ip::address_v4::loopback(), 0});
  const int32_t port = taken.local_endpoint().port();
  CTunnel& tunnel = proxy_->AddTunnel({"h", port, 119, false, false, kTypeNntp});
  EXPECT_EQ(tunnel.start(), 10048);
  ASSERT_EQ(boxes.Boxes().size(), 1u);
  EXPECT_EQ(boxes.Boxes()[0].text, std::string(LanguageString(kLangGerman, 130)) + " " +
                                       std::to_string(port) + " " +
                                       std::string(LanguageString(kLangGerman, 131)));
  EXPECT_EQ(boxes.Boxes()[0].title, MessageBoxTitle(kLangGerman, 132));
}

}  // namespace
}  // namespace brindle::proxytest
