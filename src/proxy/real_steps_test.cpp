// The program's own rewriting and filter steps wired into the channels, and
// the tunnel box in the user's language.
#include "core/language.h"
#include "core/message_box.h"
#include "proxy/proxy_fixture.h"

namespace brindle::proxytest {
namespace {

class RealStepsTest : public ::testing::Test {
 protected:
  void MakeProxy(Settings settings) {
    store_ = std::make_unique<SettingsStore>(std::move(settings));
    ProxyOptions options;
    options.companionControlPort = UnusedPort(io_);
    proxy_ = std::make_unique<Proxy>(io_, *store_, options);  // default steps
  }
  std::shared_ptr<Peer> Through(ScriptedServer& server, int32_t type) {
    TunnelRecord record{"127.0.0.1", UnusedPort(io_), server.Port(), true, false, type};
    proxy_->AddTunnel(record);
    auto client = Connect(io_, static_cast<uint16_t>(record.SrcPort));
    EXPECT_TRUE(RunUntil(io_, [&] { return !server.peers.empty() && !client->received.empty(); }));
    client->received.clear();
    return client;
  }

  asio::io_context io_;
  std::unique_ptr<SettingsStore> store_;
  std::unique_ptr<Proxy> proxy_;
};

TEST_F(RealStepsTest, PostedArticleGetsTheConfiguredHeaders) {
  Settings s;
  s.intXNewsreader = 1;
  s.strXNewsreader = "Brindle Reader";
  s.newsHeaders[0] = {"X-Extra", "Subject", "yes"};
  MakeProxy(s);
  ScriptedServer server{io_, "200 ok\r\n"};
  auto client = Through(server, kTypeNntp);
  client->Send("POST\r\n");
  ASSERT_TRUE(RunUntil(io_, [&] { return server.peers[0]->received == "POST\r\n"; }));
  server.peers[0]->Send("340 go\r\n");
  ASSERT_TRUE(RunUntil(io_, [&] { return !client->received.empty(); }));
  client->Send("From: a@b\r\nSubject: s\r\nX-Newsreader: OE 6\r\n\r\ntext\r\n.\r\n");
  EXPECT_TRUE(RunUntil(io_, [&] {
    return server.peers[0]->received ==
           "POST\r\nFrom: a@b\r\nSubject: s\r\nX-Extra: yes\r\nX-Newsreader: Brindle Reader\r\n"
           "\r\ntext\r\n.\r\n";
  })) << server.peers[0]->received;
}

TEST_F(RealStepsTest, DownloadedArticleHasControlCharactersBlanked) {
  Settings s;
  s.intCharFiltering = 1;
  MakeProxy(s);
  ScriptedServer server{io_, "200 ok\r\n"};
  auto client = Through(server, kTypeNntp);
  client->Send("ARTICLE 1\r\n");
  ASSERT_TRUE(RunUntil(io_, [&] { return server.peers[0]->received == "ARTICLE 1\r\n"; }));
  server.peers[0]->Send("220 1 <a@b>\r\nSubject: s\r\n\r\nbell\x07tab\there\r\n.\r\n");
  EXPECT_TRUE(RunUntil(io_, [&] {
    return client->received == "220 1 <a@b>\r\nSubject: s\r\n\r\nbell tab\there\r\n.\r\n";
  })) << client->received;
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
