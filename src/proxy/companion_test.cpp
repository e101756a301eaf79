// The companion link as tunnels and the close-down use it.
#include "core/message_box.h"
#include "proxy/companion_link.h"
#include "proxy/proxy_fixture.h"

namespace brindle::proxytest {
namespace {

using ::testing::ElementsAre;

const std::string kGreeting = "+OK ready\r\n";

class CompanionTest : public ProxyFixture {
 protected:
  ScriptedServer server_{io_, kGreeting};
};

TEST_F(CompanionTest, SslTunnelRegistersRouteAndItsChannelsGoThroughIt) {
  MakeProxy();
  TunnelRecord record{"pop.example.org", UnusedPort(io_), 995, true, true, kTypePop3};
  int result = -1;
  CTunnel& tunnel = proxy_->AddTunnel(record, [&](int error) { result = error; });
  ASSERT_TRUE(RunUntil(io_, [&] { return result == 0; }));
  const std::string port = std::to_string(tunnel.srcSSLPort());
  EXPECT_THAT(companion_.exchanges, ElementsAre("a:" + port + ":pop.example.org:995\r\nEND"));

  // The companion listens on the route's port; a client's channel lands there.
  ScriptedServer route{io_, kGreeting, tunnel.srcSSLPort()};
  Dialogue d = Open(static_cast<uint16_t>(record.SrcPort), route, kGreeting);
  d.client->Send("STAT\r\n");
  EXPECT_TRUE(Receives(d.server, "STAT\r\n"));

  // Stopping twice withdraws the same route twice; the close-down quits once.
  bool stopped = false;
  tunnel.StopServer();
  tunnel.StopServer([&] { stopped = true; });
  ASSERT_TRUE(RunUntil(io_, [&] { return stopped; }));
  bool closed = false;
  proxy_->CloseDown([&] { closed = true; });
  ASSERT_TRUE(RunUntil(io_, [&] { return closed; }));
  const std::string d_route = "d:" + port + "\r\nEND";
  EXPECT_THAT(companion_.exchanges,
              ElementsAre(::testing::_, d_route, d_route, d_route, "QUIT\r\nEND"));
  EXPECT_EQ(proxy_->ChannelCount(), 0u);
  EXPECT_TRUE(proxy_->Tunnels().empty());
}

TEST_F(CompanionTest, StartTlsTunnelAsksForAnUpgradedRoute) {
  MakeProxy();
  TunnelRecord record{"mx.example.org", UnusedPort(io_), 587, true, false, kTypeSmtp, true};
  int result = -1;
  CTunnel& tunnel = proxy_->AddTunnel(record, [&](int error) { result = error; });
  ASSERT_TRUE(RunUntil(io_, [&] { return result == 0; }));
  EXPECT_THAT(companion_.exchanges,
              ElementsAre("s:smtp:" + std::to_string(tunnel.srcSSLPort()) +
                          ":mx.example.org:587\r\nEND"));
}

TEST_F(CompanionTest, RoutePortsSkipPortsInUseAndPortsPromisedToOtherRoutes) {
  MakeProxy();
  ScriptedServer squatter{io_, "", firstSslPort_};
  TunnelRecord record{"h", UnusedPort(io_), 563, true, true, kTypeNntp};
  CTunnel& first = proxy_->AddTunnel(record);
  // Started in the same burst: the companion has bound nothing yet.
  record.SrcPort = UnusedPort(io_);
  CTunnel& second = proxy_->AddTunnel(record);
  EXPECT_GT(first.srcSSLPort(), firstSslPort_);
  EXPECT_NE(second.srcSSLPort(), first.srcSSLPort());
  ASSERT_TRUE(RunUntil(io_, [&] { return companion_.exchanges.size() == 2; }));
  EXPECT_EQ(companion_.exchanges[0], "a:" + std::to_string(first.srcSSLPort()) + ":h:563\r\nEND");
  EXPECT_EQ(companion_.exchanges[1], "a:" + std::to_string(second.srcSSLPort()) + ":h:563\r\nEND");
}

TEST_F(CompanionTest, QuitIsSentOnceEvenWithoutSslTunnels) {
  MakeProxy();
  Tunnel(kTypeNntp, server_);
  bool up = false;
  proxy_->ProbeCompanion([&](bool answer) { up = answer; });
  // The probe may end before the companion's side has taken the connection.
  ASSERT_TRUE(RunUntil(io_, [&] { return up && companion_.connections == 1; }));
  int done = 0;
  proxy_->CloseDown([&] { ++done; });
  proxy_->CloseDown([&] { ++done; });
  ASSERT_TRUE(RunUntil(io_, [&] { return done == 2; }));
  EXPECT_THAT(companion_.exchanges, ElementsAre("QUIT\r\nEND"));
}

TEST(CompanionLinkTest, CompanionThatNeverClosesCostsAtMostTheCloseWait) {
  asio::io_context io;
  FakeCompanion silent{io, false};
  auto link = std::make_shared<CompanionLink>(io, silent.Port());
  std::vector<std::string> finished;
  link->Send(
      CompanionLink::DeleteRoute(1100), CompanionLink::kRouteConnectLimit,
      [&](bool sent, const std::string&) { finished.push_back(sent ? "d sent" : "d lost"); });
  link->Send(
      CompanionLink::Quit(), CompanionLink::kQuitConnectLimit,
      [&](bool sent, const std::string&) { finished.push_back(sent ? "quit sent" : "quit lost"); });
  // Two exchanges, each held open by the companion: bounded by two close waits.
  ASSERT_TRUE(RunUntil(
      io, [&] { return finished.size() == 2; }, std::chrono::seconds(10)));
  EXPECT_THAT(finished, ElementsAre("d sent", "quit sent"));
  EXPECT_THAT(silent.exchanges, ElementsAre("d:1100\r\nEND", "QUIT\r\nEND"));
}

TEST_F(CompanionTest, CompanionDownDropsCommandsSilently) {
  MessageBoxCapture boxes;
  companionPort_ = UnusedPort(io_);
  MakeProxy();
  bool probed = false, up = true;
  proxy_->ProbeCompanion([&](bool answer) { probed = true, up = answer; });
  ASSERT_TRUE(RunUntil(io_, [&] { return probed; }));
  EXPECT_FALSE(up);

  int result = -1;
  TunnelRecord record{"nntp.example.org", UnusedPort(io_), 563, true, true, kTypeNntp};
  CTunnel& tunnel = proxy_->AddTunnel(record, [&](int error) { result = error; });
  ASSERT_TRUE(RunUntil(io_, [&] { return result == 0; }));
  EXPECT_TRUE(tunnel.IsRunning());
  EXPECT_TRUE(boxes.Boxes().empty());

  // Nobody listens on the route's port: the channel fails on its server side.
  auto client = Connect(io_, static_cast<uint16_t>(record.SrcPort));
  ASSERT_TRUE(client);
  EXPECT_TRUE(RunUntil(io_, [&] { return client->closed; }));
  EXPECT_EQ(proxy_->ChannelCount(), 0u);
}

}  // namespace
}  // namespace brindle::proxytest
