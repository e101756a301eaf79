// What another user of the machine can do to the companion and the program
// that steers it: nothing. The stranger is a helper run as user "nobody",
// which needs root to switch to; elsewhere these tests are skipped.
#include <unistd.h>

#include <gtest/gtest.h>

#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <chrono>
#include <cstdio>
#include <future>
#include <optional>
#include <thread>

#include "core/log.h"
#include "core/settings_store.h"
#include "proxy/proxy.h"
#include "proxy/tunnel.h"
#include "sslbridge/bridge.h"
#include "sslbridge/tls_fixtures.h"

namespace brindle::sslbridge {
namespace {

using namespace std::chrono_literals;

constexpr char kKey[] = "0123456789abcdef";

// Runs the helper as "nobody" and returns everything it printed; with
// `firstLine`, returns once the first line is in and leaves the rest to
// Finish().
class Stranger {
 public:
  explicit Stranger(const std::string& args) {
    const std::string command = "setpriv --reuid=65534 --regid=65534 --clear-groups -- " +
                                std::string(LOOPBACK_STRANGER_EXE) + " " + args;
    pipe_ = popen(command.c_str(), "r");
  }
  ~Stranger() { Finish(); }
  std::string Line() {
    char buffer[256];
    return pipe_ && std::fgets(buffer, sizeof buffer, pipe_) ? buffer : "";
  }
  std::string Finish() {
    std::string out;
    if (!pipe_) return out;
    char buffer[256];
    size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, pipe_)) > 0) out.append(buffer, n);
    pclose(pipe_);
    pipe_ = nullptr;
    return out;
  }

 private:
  FILE* pipe_ = nullptr;
};

class StrangerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0 || access("/usr/bin/setpriv", X_OK) != 0)
      GTEST_SKIP() << "needs root and setpriv to act as a second user (nobody)";
    caFile_ = testing::WritePemFile(ca_.cert.get());
    StartBridge(0);
    ProxyOptions options;
    options.companionControlPort = control_;
    options.companionKey = kKey;
    options.firstSslPort = testing::FreePort();
    proxy_.emplace(io_, settings_, options);
    runner_ = std::thread([this] { io_.run(); });
    tunnelPort_ = testing::FreePort();
    std::promise<int> started;
    OnLoop([&] {
      tunnel_ =
          &proxy_->AddTunnel({"localhost", tunnelPort_, server_.Port(), true, true, kTypePop3},
                             [&](int error) { started.set_value(error); });
    });
    ASSERT_EQ(started.get_future().get(), 0);
  }

  void TearDown() override {
    if (!runner_.joinable()) return;
    OnLoop([&] { proxy_->CloseDown([&] { io_.stop(); }); });
    runner_.join();
    std::remove(caFile_.c_str());
  }

  void StartBridge(uint16_t port) {
    BridgeOptions options;
    options.controlPort = port;
    options.caFiles.push_back(caFile_);
    options.controlKey = kKey;
    bridge_.emplace(io_, options);
    ASSERT_FALSE(bridge_->Open());
    control_ = bridge_->ControlPort();
  }

  // Runs `work` on the loop's thread and waits for it.
  void OnLoop(std::function<void()> work) {
    if (!runner_.joinable()) return work();
    std::promise<void> done;
    asio::post(io_, [&] {
      work();
      done.set_value();
    });
    done.get_future().get();
  }

  // A client of the tunnel: its command comes back from the TLS echo server.
  void ExpectTunnelWorks() {
    testing::LoopbackClient client(tunnelPort_);
    ASSERT_TRUE(client.Connected());
    ASSERT_TRUE(client.Send("STAT\r\n"));
    EXPECT_EQ(client.ReadUntil("\r\n"), "STAT\r\n");
  }

  log::Capture log_;
  testing::Identity ca_ = testing::MakeCa("Stranger Test CA");
  testing::TlsEchoServer server_{testing::MakeServerCert(ca_, {"localhost"})};
  std::string caFile_;
  asio::io_context io_;
  std::optional<Bridge> bridge_;
  uint16_t control_ = 0;
  SettingsStore settings_;
  std::optional<Proxy> proxy_;
  CTunnel* tunnel_ = nullptr;
  uint16_t tunnelPort_ = 0;
  std::thread runner_;
};

TEST_F(StrangerTest, CannotAddDeleteRepointOrEndRoutes) {
  const std::string route = std::to_string(tunnel_->srcSSLPort());
  const uint16_t spare = testing::FreePort();
  for (const std::string& command :
       {"a:" + route + ":evil.example:443", "a:" + std::to_string(spare) + ":evil.example:443",
        "d:" + route, std::string("QUIT")}) {
    Stranger stranger("send " + std::to_string(control_) + " " + command);
    EXPECT_EQ(stranger.Finish(), "ERR refused\r\n") << command;
  }
  // This user's other programs do not hold the key either.
  {
    testing::LoopbackClient same(control_);
    ASSERT_TRUE(same.Send("QUIT\r\nEND"));
    bool closed = false;
    EXPECT_EQ(same.ReadToEnd(&closed), "ERR refused\r\n");
  }
  EXPECT_FALSE(testing::LoopbackClient(spare).Connected()) << "a stranger's route was added";
  ExpectTunnelWorks();
  EXPECT_TRUE(log_.Contains("connection from another user refused")) << log_.Text();
}

TEST_F(StrangerTest, SquattedRoutePortGetsNoByteAndTheRouteMovesOn) {
  const uint16_t route = tunnel_->srcSSLPort();
  OnLoop([&] { bridge_->Stop(); });  // the companion is gone: its route port is free
  Stranger squatter("squat " + std::to_string(route) + " 4");
  ASSERT_EQ(squatter.Line(), "listening\n");

  {
    testing::LoopbackClient client(tunnelPort_);
    ASSERT_TRUE(client.Connected());
    client.Send("USER me\r\nPASS secret\r\n");
    bool closed = false;
    EXPECT_EQ(client.ReadToEnd(&closed), "");
    EXPECT_TRUE(closed);
  }
  EXPECT_TRUE(log_.Contains("is held by another user's program")) << log_.Text();

  // The companion comes back on its control port; the squatted port is
  // refused to it, and the tunnel takes another one.
  std::promise<void> restored;
  OnLoop([&] {
    StartBridge(control_);
    proxy_->RestoreRoutes([&] { restored.set_value(); });
  });
  ASSERT_EQ(restored.get_future().wait_for(20s), std::future_status::ready);
  EXPECT_NE(tunnel_->srcSSLPort(), route);
  ExpectTunnelWorks();
  EXPECT_EQ(squatter.Finish(), "received 0\n");
}

}  // namespace
}  // namespace brindle::sslbridge
