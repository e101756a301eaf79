// Once the server accepts a switch to TLS, the channel carries the handshake
// and everything after it untouched, in either direction, line ends or not.
#include "proxy/proxy_fixture.h"

namespace brindle::proxytest {
namespace {

struct Switch {
  int32_t type;
  std::string greeting, command, accepted;
};

class StartTlsTest : public ProxyFixture, public ::testing::WithParamInterface<Switch> {};

TEST_P(StartTlsTest, AcceptedSwitchRelaysBytesUnchanged) {
  const Switch& p = GetParam();
  MakeProxy();
  ScriptedServer server{io_, p.greeting};
  Dialogue d = Open(Tunnel(p.type, server), server, p.greeting);
  Feed(d.client, p.command);
  Feed(d.server, p.accepted);
  ASSERT_TRUE(Receives(d.client, p.accepted));
  // A handshake without line ends, holding text that would otherwise start
  // collecting (POST, RETR, DATA).
  const std::string hello("\x16\x03\x01POST\r\nRETR 1\r\nDATA\r\n\x00", 24);
  d.client->Send(hello);
  EXPECT_TRUE(Receives(d.server, p.command + hello));
  d.server->Send(
      "\x16\x03\x03"
      "220 ");
  EXPECT_TRUE(Receives(d.client, p.accepted + "\x16\x03\x03"
                                              "220 "));
  EXPECT_TRUE(steps_.calls.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Protocols, StartTlsTest,
    ::testing::Values(Switch{kTypeNntp, "200 ready\r\n", "STARTTLS\r\n", "382 go\r\n"},
                      Switch{kTypePop3, "+OK ready\r\n", "STLS\r\n", "+OK go\r\n"},
                      Switch{kTypeSmtp, "220 ready\r\n", "STARTTLS\r\n", "220 go\r\n"}),
    [](const auto& info) {
      return std::string(info.param.type == kTypeNntp   ? "Nntp"
                         : info.param.type == kTypePop3 ? "Pop3"
                                                        : "Smtp");
    });

}  // namespace
}  // namespace brindle::proxytest
