// CTunnel: one configured local port that the mail/news client connects to
// instead of its real server. Listens on 127.0.0.1 only; every accepted
// connection becomes a channel whose server side goes to the real server,
// or, when the tunnel uses TLS, to the loopback port on which the companion
// carries it to the real server.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/steady_timer.hpp>

#include "core/settings_store.h"
#include "localnet/accept_backoff.h"
#include "proxy/channel_pair.h"
#include "proxy/channel_registry.h"
#include "proxy/companion_link.h"
#include "proxy/route_ports.h"
#include "proxy/socket_pools.h"

namespace brindle {

// What tunnels share; all of it outlives every tunnel.
struct TunnelServices {
  asio::io_context& io;
  SettingsStore& settings;
  RelaySocketPool& relays;
  RoutePorts& routePorts;
  std::shared_ptr<ChannelRegistry> channels;
  std::shared_ptr<CompanionLink> companion;
  uint16_t firstSslPort = 1024;
};

class CTunnel {
 public:
  explicit CTunnel(TunnelServices services);
  ~CTunnel();  // stops the tunnel (withdrawing its route) and frees its listener
  CTunnel(const CTunnel&) = delete;
  CTunnel& operator=(const CTunnel&) = delete;

  std::string Server;
  int32_t SrcPort = 0;
  int32_t DestPort = 0;
  bool AutoStart = false;
  bool SSL = false;
  bool StartTLS = false;  // the companion upgrades the server leg (SSL wins when both are set)

  int32_t tType() const { return tType_; }
  void tType(int32_t value) {
    if (tType_ == kTypeUnset) tType_ = value;  // set once, later values ignored
  }
  uint16_t srcSSLPort() const { return srcSSLPort_; }
  int16_t intRelayIndex() const { return intRelayIndex_; }
  bool IsRunning() const { return blnRunning_; }
  // The error number of the last start (0 = listening or never started).
  int StartError() const { return startError_; }
  const TunnelTraffic& Traffic() const { return *traffic_; }

  // Binds and listens (0, or the error number after the error box). An SSL
  // tunnel then registers its route with the companion, also after a failed
  // bind. `done` gets the same number once that has finished.
  int start(std::function<void(int error)> done = {});
  // Stops listening (channels live on) and, for SSL, withdraws the route.
  void StopServer(std::function<void()> done = {});
  // A companion started again knows no routes: a running SSL tunnel tells it
  // its route once more. `done` when that exchange has ended.
  void RestoreRoute(std::function<void()> done = {});

 private:
  std::error_code Listen();
  void ShowStartError(int error, const std::error_code& ec);
  uint16_t FindFreeLocalPort();
  void RegisterRoute(int attemptsLeft, std::function<void()> done);
  void ArmAccept();
  void Accepted(std::error_code ec, asio::ip::tcp::socket client);
  ChannelTarget Target() const;
  bool ThroughCompanion() const { return SSL || StartTLS; }

  TunnelServices services_;
  std::unique_ptr<asio::ip::tcp::acceptor> acceptor_;
  asio::steady_timer retry_;
  localnet::AcceptBackoff backoff_;
  std::shared_ptr<int> alive_ = std::make_shared<int>(0);
  int32_t tType_ = kTypeUnset;
  uint16_t srcSSLPort_ = 0;
  bool routeClaimed_ = false;
  int16_t intRelayIndex_;
  bool blnRunning_ = false;
  bool acceptArmed_ = false;
  bool waitingForPair_ = false;
  int startError_ = 0;
  std::shared_ptr<TunnelTraffic> traffic_ = std::make_shared<TunnelTraffic>();
  uint64_t generation_ = 0;  // a stop or restart makes older handlers stale
};

}  // namespace brindle
