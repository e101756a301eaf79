// A proxy on its own loop with recording message steps and a fake
// companion, plus the moves most protocol tests make: start a tunnel to a
// scripted server, connect a client through it, and hand over one piece and
// wait until the proxy has taken it.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "proxy/proxy.h"
#include "proxy/proxy_test_support.h"
#include "proxy/transfer_display.h"
#include "proxy/tunnel.h"

namespace brindle::proxytest {

class ProxyFixture : public ::testing::Test {
 protected:
  struct Dialogue {
    std::shared_ptr<Peer> client;
    std::shared_ptr<Peer> server;
  };

  // `ownSteps`: the program's rewriting and filters instead of recording ones.
  void MakeProxy(Settings settings = {}, bool ownSteps = false) {
    store_ = std::make_unique<SettingsStore>(std::move(settings));
    ProxyOptions options;
    options.companionControlPort = companionPort_;
    options.firstSslPort = firstSslPort_;
    options.steps = ownSteps ? nullptr : &steps_;
    options.timeouts = timeouts_;
    options.spammerListLook = std::chrono::milliseconds(10);
    proxy_ = std::make_unique<Proxy>(io_, *store_, options);
    proxy_->SetDisplayTransferredData(true);
  }

  // A started tunnel of `type` to `server`; returns its local port.
  uint16_t Tunnel(int32_t type, const ScriptedServer& server, bool ssl = false) {
    if (!proxy_) MakeProxy();
    TunnelRecord record{"127.0.0.1", UnusedPort(io_), server.Port(), true, ssl, type};
    bool started = false;
    proxy_->AddTunnel(record, [&](int error) {
      EXPECT_EQ(error, 0);
      started = true;
    });
    EXPECT_TRUE(RunUntil(io_, [&] { return started; }));
    return static_cast<uint16_t>(record.SrcPort);
  }

  // A client through the tunnel, once the server has greeted it.
  Dialogue Open(uint16_t port, ScriptedServer& server, const std::string& greeting) {
    size_t before = server.peers.size();
    Dialogue d{Connect(io_, port), nullptr};
    EXPECT_TRUE(d.client);
    EXPECT_TRUE(RunUntil(io_, [&] { return server.peers.size() > before; }));
    d.server = server.peers.back();
    EXPECT_TRUE(RunUntil(io_, [&] { return d.client->received == greeting; }));
    d.client->received.clear();
    return d;
  }

  // Sends one piece and waits until the proxy has read it (its display ends
  // with the piece, as masked for display).
  void Feed(const std::shared_ptr<Peer>& peer, const std::string& piece,
            const std::string& shown = {}) {
    const std::string& expect = shown.empty() ? piece : shown;
    const std::string tail = expect.substr(expect.size() > 8 ? expect.size() - 8 : 0);
    const uint64_t before = proxy_->Display().PiecesShown();
    peer->Send(piece);
    ASSERT_TRUE(RunUntil(io_,
                         [&] {
                           return proxy_->Display().PiecesShown() > before &&
                                  proxy_->Display().RecentlyTransferredData().ends_with(tail);
                         }))
        << "proxy never saw: " << piece.substr(0, 60);
  }

  bool Receives(const std::shared_ptr<Peer>& peer, const std::string& text) {
    return RunUntil(io_, [&] { return peer->received == text; });
  }

  asio::io_context io_;
  RecordingSteps steps_;
  FakeCompanion companion_{io_, true};
  uint16_t companionPort_ = companion_.Port();
  uint16_t firstSslPort_ = UnusedPort(io_);
  ChannelTimeouts timeouts_;
  std::unique_ptr<SettingsStore> store_;
  std::unique_ptr<Proxy> proxy_;
};

}  // namespace brindle::proxytest
