// The companion end to end in-process: control commands over loopback, TLS
// echo servers with certificates made here, a plain client on the route port.
#include "sslbridge/bridge.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <optional>
#include <thread>

#include "core/log.h"
#include "sslbridge/tls_fixtures.h"

namespace brindle::sslbridge {
namespace {

using namespace std::chrono_literals;
using testing::Identity;
using testing::LoopbackClient;
using testing::SendControl;
using testing::TlsEchoServer;

std::string AddRoute(uint16_t port, const std::string& host, uint16_t dest) {
  return "a:" + std::to_string(port) + ":" + host + ":" + std::to_string(dest) + "\r\nEND";
}

// Sends one line through the relay and expects the echo server's copy back.
void ExpectEcho(LoopbackClient& client, const std::string& line) {
  ASSERT_TRUE(client.Send(line));
  EXPECT_EQ(client.ReadUntil("\r\n"), line);
}

size_t CountIn(const std::string& text, const std::string& needle) {
  size_t count = 0;
  for (size_t at = text.find(needle); at != std::string::npos; at = text.find(needle, at + 1)) {
    ++count;
  }
  return count;
}

// Expects the client to be closed without a single byte reaching it.
void ExpectClosedUnanswered(LoopbackClient& client, const std::string& why = "") {
  bool closed = false;
  EXPECT_EQ(client.ReadToEnd(&closed), "") << why;
  EXPECT_TRUE(closed) << why;
}

class BridgeTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    ca_ = new Identity(testing::MakeCa("Brindle Test CA"));
    caFile_ = new std::string(testing::WritePemFile(ca_->cert.get()));
  }
  static void TearDownTestSuite() {
    std::remove(caFile_->c_str());
    delete caFile_;
    delete ca_;
  }

  // Starts the companion trusting the test CA (plus whatever `tweak` adds).
  void StartBridge(std::function<void(BridgeOptions&)> tweak = {}) {
    BridgeOptions options;
    options.controlPort = 0;
    options.caFiles.push_back(*caFile_);
    options.controlReadLimit = 300ms;
    if (tweak) tweak(options);
    bridge_.emplace(io_, options);
    ASSERT_FALSE(bridge_->Open());
    control_ = bridge_->ControlPort();
    runner_ = std::async(std::launch::async, [this] { io_.run(); });
  }

  void TearDown() override {
    if (runner_.valid()) {
      SendControl(control_, "QUIT\r\nEND");
      ASSERT_EQ(runner_.wait_for(10s), std::future_status::ready) << "QUIT did not end the run";
    }
  }

  // Adds a route to `host`:`server` and returns the route's port.
  uint16_t Route(const std::string& host, const TlsEchoServer& server) {
    uint16_t port = testing::FreePort();
    EXPECT_TRUE(SendControl(control_, AddRoute(port, host, server.Port())));
    return port;
  }

  static Identity* ca_;
  static std::string* caFile_;
  log::Capture log_;
  asio::io_context io_;
  std::optional<Bridge> bridge_;
  uint16_t control_ = 0;
  std::future<void> runner_;
};

Identity* BridgeTest::ca_ = nullptr;
std::string* BridgeTest::caFile_ = nullptr;

TEST_F(BridgeTest, RelaysBothWaysWithSniAndCloseNotify) {
  TlsEchoServer server(testing::MakeServerCert(*ca_, {"localhost"}));
  StartBridge();
  uint16_t port = Route("localhost", server);

  {
    LoopbackClient client(port);
    ASSERT_TRUE(client.Connected());
    ExpectEcho(client, "200 hello\r\n");

    // A bulk transfer larger than every buffer on the way, every byte value.
    std::string bulk;
    for (int i = 0; i < 3 * 1024 * 1024; ++i) bulk += static_cast<char>(i * 7 + i / 251);
    bulk += "\r\n.\r\n";
    std::thread sender([&] { client.Send(bulk); });
    std::string back = client.ReadUntil("\r\n.\r\n");
    sender.join();
    EXPECT_TRUE(back == bulk) << "echoed " << back.size() << " of " << bulk.size() << " bytes";

    // The client ends: the server must get close_notify and may then close.
    client.ShutdownWrite();
    ExpectClosedUnanswered(client);
  }
  EXPECT_EQ(server.ServerNamesSeen(), std::vector<std::string>{"localhost"});
  EXPECT_EQ(server.CloseNotifiesReceived(), 1);
  EXPECT_FALSE(log_.Contains("error:")) << log_.Text();
}

TEST_F(BridgeTest, ServerClosingWithoutCloseNotifyEndsTheClientCleanly) {
  TlsEchoServer server(testing::MakeServerCert(*ca_, {"localhost"}));
  StartBridge();
  LoopbackClient client(Route("localhost", server));
  ASSERT_TRUE(client.Send("QUIT\r\nBYE\r\n"));
  bool closed = false;
  std::string got = client.ReadToEnd(&closed);
  EXPECT_EQ(got.substr(got.size() >= 5 ? got.size() - 5 : 0), "bye\r\n");
  EXPECT_TRUE(closed);
  EXPECT_FALSE(log_.Contains("error:")) << log_.Text();
}

// Each failed check closes the client at once and names its reason.
TEST_F(BridgeTest, RejectedCertificatesCloseTheClientWithTheReason) {
  Identity stranger = testing::MakeCa("Someone Else");
  TlsEchoServer untrusted(testing::MakeServerCert(stranger, {"localhost"}));
  TlsEchoServer otherName(testing::MakeServerCert(*ca_, {"news.example.org"}));
  TlsEchoServer goodName(testing::MakeServerCert(*ca_, {"localhost"}));
  StartBridge();

  struct Case {
    const char* host;
    const TlsEchoServer& server;
    const char* reason;
  } cases[] = {
      {"localhost", untrusted, "unable to get local issuer certificate"},
      {"localhost", otherName, "hostname mismatch"},
      {"127.0.0.1", goodName, "IP address mismatch"},
  };
  for (const auto& c : cases) {
    LoopbackClient client(Route(c.host, c.server));
    ASSERT_TRUE(client.Connected());
    client.Send("LIST\r\n");
    ExpectClosedUnanswered(client, c.reason);
    EXPECT_TRUE(log_.Contains("certificate rejected: " + std::string(c.reason))) << log_.Text();
  }
}

TEST_F(BridgeTest, InsecureHostSkipsTheChecksForThatHostOnly) {
  Identity stranger = testing::MakeCa("Someone Else");
  TlsEchoServer untrusted(testing::MakeServerCert(stranger, {"elsewhere.test"}));
  StartBridge([](BridgeOptions& o) { o.insecureHosts.push_back("localhost"); });

  LoopbackClient insecure(Route("localhost", untrusted));
  ExpectEcho(insecure, "+OK\r\n");
  EXPECT_TRUE(log_.Contains("certificate checks are off for localhost"));

  LoopbackClient checked(Route("127.0.0.1", untrusted));
  checked.Send("+OK\r\n");
  ExpectClosedUnanswered(checked);
}

// A route's next connection resumes the session the server handed out.
// Adding a known port again points it at the new server for new connections,
// which start afresh there.
TEST_F(BridgeTest, LaterConnectionsOfARouteResumeItsSessionUntilItIsRepointed) {
  TlsEchoServer first(testing::MakeServerCert(*ca_, {"localhost"}));
  TlsEchoServer second(testing::MakeServerCert(*ca_, {"localhost"}));
  StartBridge();
  uint16_t port = Route("localhost", first);
  for (const char* line : {"one\r\n", "two\r\n"}) {
    LoopbackClient client(port);
    ExpectEcho(client, line);
  }
  EXPECT_EQ(CountIn(log_.Text(), ", resumed"), 1u) << log_.Text();

  ASSERT_TRUE(SendControl(control_, AddRoute(port, "localhost", second.Port())));
  EXPECT_TRUE(log_.Contains("led to localhost:" + std::to_string(first.Port())));
  LoopbackClient client(port);
  ExpectEcho(client, "three\r\n");
  EXPECT_EQ(CountIn(log_.Text(), ", resumed"), 1u) << log_.Text();
  EXPECT_EQ(first.ServerNamesSeen().size(), 2u);
  EXPECT_EQ(second.ServerNamesSeen().size(), 1u);
}

TEST_F(BridgeTest, DeleteStopsTheListenerButLetsRelaysFinish) {
  TlsEchoServer server(testing::MakeServerCert(*ca_, {"localhost"}));
  StartBridge();
  uint16_t port = Route("localhost", server);
  LoopbackClient before(port);
  ExpectEcho(before, "one\r\n");

  ASSERT_TRUE(SendControl(control_, "d:" + std::to_string(port) + "\r\nEND"));
  EXPECT_FALSE(LoopbackClient(port).Connected());
  ExpectEcho(before, "two\r\n");

  // The port can be given out again.
  ASSERT_TRUE(SendControl(control_, AddRoute(port, "localhost", server.Port())));
  LoopbackClient after(port);
  ExpectEcho(after, "three\r\n");
}

// A server that takes the connection but never answers the handshake must
// not hold the client forever.
TEST_F(BridgeTest, SilentServerTimesOutTheHandshake) {
  asio::io_context quiet;
  asio::ip::tcp::acceptor silent(quiet, {asio::ip::address_v4::loopback(), 0});
  StartBridge([](BridgeOptions& o) { o.handshakeLimit = 300ms; });
  uint16_t port = testing::FreePort();
  ASSERT_TRUE(SendControl(control_, AddRoute(port, "localhost", silent.local_endpoint().port())));
  LoopbackClient client(port);
  client.Send("STAT\r\n");
  ExpectClosedUnanswered(client);
  EXPECT_TRUE(log_.Contains("connect and TLS handshake took too long")) << log_.Text();
}

TEST_F(BridgeTest, BadControlInputIsLoggedAndNeverHangs) {
  TlsEchoServer server(testing::MakeServerCert(*ca_, {"localhost"}));
  StartBridge();
  EXPECT_TRUE(SendControl(control_, "a:12:no-dest-port\r\nEND"));
  EXPECT_TRUE(SendControl(control_, "HELLO\r\nEND"));
  EXPECT_TRUE(SendControl(control_, std::string(8000, 'x')));
  // No "END" at all: the companion closes after its read limit.
  EXPECT_TRUE(SendControl(control_, "a:1:localhost:2\r\n"));
  EXPECT_TRUE(log_.Contains("malformed command ignored: a:12:no-dest-port"));
  EXPECT_TRUE(log_.Contains("malformed command ignored: HELLO"));
  EXPECT_TRUE(log_.Contains("no complete command in time"));

  // A port already taken is reported, and the companion goes on working.
  uint16_t taken = Route("localhost", server);
  EXPECT_TRUE(SendControl(control_, AddRoute(control_, "localhost", server.Port())));
  EXPECT_TRUE(log_.Contains("cannot listen on 127.0.0.1:" + std::to_string(control_)));
  LoopbackClient client(taken);
  ExpectEcho(client, "still here\r\n");
}

TEST_F(BridgeTest, QuitEndsRelaysAndTheRun) {
  TlsEchoServer server(testing::MakeServerCert(*ca_, {"localhost"}));
  StartBridge();
  uint16_t port = Route("localhost", server);
  LoopbackClient client(port);
  ExpectEcho(client, "x\r\n");

  ASSERT_TRUE(SendControl(control_, "QUIT\r\nEND"));
  ASSERT_EQ(runner_.wait_for(10s), std::future_status::ready);
  runner_.get();
  bool closed = false;
  client.ReadToEnd(&closed);
  EXPECT_TRUE(closed);
  EXPECT_FALSE(LoopbackClient(port).Connected());
  EXPECT_FALSE(LoopbackClient(control_).Connected());
}

}  // namespace
}  // namespace brindle::sslbridge
