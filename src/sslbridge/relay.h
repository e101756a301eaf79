// One relayed connection: a plain client accepted on a route's loopback port,
// carried over TLS to the route's real server. Both directions run at once;
// each reads again only after its last piece has been written to the other
// side, so a slow reader slows the writer instead of filling memory.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <asio/ip/tcp.hpp>
#include <asio/steady_timer.hpp>

#include "sslbridge/control_command.h"
#include "sslbridge/tls_engine.h"

namespace brindle::sslbridge {

// What the connections of one route share: where they go, the server's
// addresses once looked up, and the TLS session to resume. A route that is
// pointed elsewhere gets a new one.
struct RouteTarget {
  uint16_t routePort = 0;  // the loopback port the clients come in on (for the log)
  std::string host;
  uint16_t port = 0;
  std::optional<asio::ip::tcp::resolver::results_type> addresses;
  std::shared_ptr<TlsRouteCache> tls;
  std::optional<UpgradeProtocol> upgrade;  // the server switches to TLS inside its protocol
};

class Relay : public std::enable_shared_from_this<Relay> {
 public:
  using ClosedHandler = std::function<void(Relay*)>;

  Relay(asio::ip::tcp::socket client, std::shared_ptr<RouteTarget> target, TlsEngine& tls,
        std::chrono::milliseconds handshakeLimit, ClosedHandler onClosed);
  ~Relay();

  void Start();
  // Ends both sides at once (program end).
  void Abort();

 private:
  static constexpr size_t kBufferSize = 128 * 1024;

  void Connect(const asio::ip::tcp::resolver::results_type& addresses);
  void OnConnected();
  void StartTls();
  void HandshakeStep();
  void ReadServer();
  void OnServerBytes(size_t n);
  void WriteClient();
  void ReadClient();
  void FlushServer();
  void SendCloseNotify();
  void ServerFinished();
  void MaybeFinish();
  void Fail(const std::string& why);
  void ArmTimer(std::chrono::milliseconds limit, const char* what);
  std::string Name() const;

  asio::ip::tcp::socket client_;
  asio::ip::tcp::socket server_;
  asio::ip::tcp::resolver resolver_;
  asio::steady_timer timer_;
  std::shared_ptr<RouteTarget> target_;
  TlsEngine& tls_;
  std::chrono::milliseconds handshakeLimit_;
  ClosedHandler onClosed_;
  std::unique_ptr<TlsSession> session_;
  bool established_ = false;
  bool closed_ = false;
  bool clientDone_ = false;             // the client stopped sending; close_notify is due or sent
  bool serverDone_ = false;             // the server stopped sending; the client has been told
  bool writingServer_ = false;          // a write to the server is under way
  bool upWaiting_ = false;              // the client's last piece waits for the server write
  std::unique_ptr<char[]> fromClient_;  // not zeroed: a fresh relay per connection
  std::unique_ptr<char[]> fromServer_;
  std::string toServer_;  // TLS records being written to the server
  std::string greeting_;  // an upgraded route's server greeting, owed to the client
  std::string toClient_;  // decrypted bytes being written to the client
};

}  // namespace brindle::sslbridge
