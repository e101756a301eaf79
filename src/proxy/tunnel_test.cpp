// Tunnels and the pair pool: start errors, teardown, the 101st connection.
#include <algorithm>
#include <cstdlib>

#include "core/log.h"
#include "core/message_box.h"
#include "proxy/proxy_fixture.h"

namespace brindle::proxytest {
namespace {

const std::string kGreeting = "200 ready\r\n";

class TunnelTest : public ProxyFixture {
 protected:
  ScriptedServer server_{io_, kGreeting};
};

TEST_F(TunnelTest, PortInUseShowsTheBoxAndLeavesTheTunnelStopped) {
  MessageBoxCapture boxes;
  const uint16_t port = Tunnel(kTypeNntp, server_);
  CTunnel& first = *proxy_->Tunnels().front();
  EXPECT_EQ(first.start(), 0) << "a running tunnel is not re-bound";

  CTunnel& second = proxy_->AddTunnel({"127.0.0.1", port, server_.Port(), false, false, 0});
  EXPECT_EQ(second.start(), 10048);
  EXPECT_FALSE(second.IsRunning());
  ASSERT_EQ(boxes.Boxes().size(), 1u);
  EXPECT_EQ(boxes.Boxes()[0].text,
            "Port " + std::to_string(port) + " is already in use. Enter another port number.");
  EXPECT_EQ(boxes.Boxes()[0].title, "OE Brindle - tunnel starting error");
  EXPECT_EQ(boxes.Boxes()[0].icon, BoxIcon::kExclamation);

  // Once the port is free again the same tunnel starts without a box.
  first.StopServer();
  EXPECT_EQ(second.start(), 0);
  EXPECT_EQ(boxes.Boxes().size(), 1u);
  EXPECT_TRUE(Open(port, server_, kGreeting).client);
}

TEST_F(TunnelTest, ServerClosingDeliversItsLastAnswerAndFreesThePair) {
  const uint16_t port = Tunnel(kTypePop3, server_);
  Dialogue d = Open(port, server_, kGreeting);
  ASSERT_EQ(proxy_->ChannelCount(), 1u);
  d.client->Send("QUIT\r\n");
  ASSERT_TRUE(Receives(d.server, "QUIT\r\n"));
  d.server->Send("+OK bye\r\n");
  d.server->Close();
  EXPECT_TRUE(RunUntil(io_, [&] { return d.client->closed; }));
  EXPECT_EQ(d.client->received, "+OK bye\r\n");
  EXPECT_EQ(proxy_->ChannelCount(), 0u);
  EXPECT_EQ(proxy_->Display().CurrentConnections(), 0u);
}

TEST_F(TunnelTest, ClientClosingClosesTheServerSideWithoutFarewell) {
  const uint16_t port = Tunnel(kTypeNntp, server_);
  Dialogue d = Open(port, server_, kGreeting);
  d.client->Close();
  EXPECT_TRUE(RunUntil(io_, [&] { return d.server->closed; }));
  EXPECT_EQ(d.server->received, "") << "no QUIT on the client's behalf";
  EXPECT_EQ(proxy_->ChannelCount(), 0u);
}

TEST_F(TunnelTest, ConnectionBeyondTheHundredPairsWaitsAndIsThenServed) {
  const uint16_t port = Tunnel(kTypeNntp, server_);
  std::vector<Dialogue> open;
  for (int i = 0; i < 100; ++i) open.push_back(Open(port, server_, kGreeting));
  ASSERT_EQ(proxy_->ChannelCount(), 100u);

  auto waiting = Connect(io_, port);  // the backlog takes it; nobody serves it yet
  ASSERT_TRUE(waiting);
  waiting->Send("LIST\r\n");
  RunFor(io_, std::chrono::milliseconds(300));
  EXPECT_EQ(server_.peers.size(), 100u);
  EXPECT_EQ(waiting->received, "");
  EXPECT_FALSE(waiting->closed) << "waiting, not refused";

  open[37].client->Close();
  ASSERT_TRUE(RunUntil(io_, [&] { return server_.peers.size() == 101; }));
  EXPECT_TRUE(Receives(waiting, kGreeting));
  EXPECT_TRUE(Receives(server_.peers.back(), "LIST\r\n"));
  EXPECT_EQ(proxy_->ChannelCount(), 100u);
}

TEST_F(TunnelTest, SilentPeersGiveTheirPairsBackButTransfersInProgressGoOn) {
  log::Capture log;
  // putenv works alike on both platforms; an empty value counts as unset.
  static char idleOn[] = "BRINDLE_CLIENT_IDLE_SECONDS=2",
              waitOn[] = "BRINDLE_SERVER_WAIT_SECONDS=1";
  static char idleOff[] = "BRINDLE_CLIENT_IDLE_SECONDS=",
              waitOff[] = "BRINDLE_SERVER_WAIT_SECONDS=";
  putenv(idleOn);
  putenv(waitOn);
  timeouts_ = ChannelTimeoutsFromEnvironment();
  putenv(idleOff);
  putenv(waitOff);
  const uint16_t port = Tunnel(kTypeNntp, server_);

  // A server that trickles a long answer keeps its channel past both limits.
  Dialogue busy = Open(port, server_, kGreeting);
  busy.client->Send("LIST\r\n");
  ASSERT_TRUE(Receives(busy.server, "LIST\r\n"));
  std::string sent;
  for (int i = 0; i < 8; ++i) {
    busy.server->Send("group." + std::to_string(i) + " 1 1 y\r\n");
    sent += "group." + std::to_string(i) + " 1 1 y\r\n";
    RunFor(io_, std::chrono::milliseconds(350));
  }
  EXPECT_TRUE(Receives(busy.client, sent));
  EXPECT_FALSE(busy.client->closed);

  // 99 more clients that say nothing hold every pair; the 101st waits.
  std::vector<Dialogue> idle;
  for (int i = 0; i < 99; ++i) idle.push_back(Open(port, server_, kGreeting));
  auto waiting = Connect(io_, port);
  ASSERT_TRUE(waiting);
  // Once the idle ones are timed out, it is greeted and served.
  EXPECT_TRUE(RunUntil(io_, [&] { return waiting->received == kGreeting; }));
  waiting->Send("DATE\r\n");
  EXPECT_TRUE(Receives(server_.peers.back(), "DATE\r\n"));
  EXPECT_TRUE(RunUntil(io_, [&] {
    return std::all_of(idle.begin(), idle.end(),
                       [](const Dialogue& d) { return d.client->closed; });
  }));
  EXPECT_TRUE(log.Contains("(BRINDLE_CLIENT_IDLE_SECONDS); channel closed")) << log.Text();

  // A server that never answers a command frees the pair after its own limit.
  ASSERT_TRUE(RunUntil(io_, [&] { return waiting->closed; }));
  EXPECT_TRUE(log.Contains("within 1 s (BRINDLE_SERVER_WAIT_SECONDS)")) << log.Text();
}

}  // namespace
}  // namespace brindle::proxytest
