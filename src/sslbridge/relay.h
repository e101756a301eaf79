// One relayed connection: a plain client accepted on a route's loopback port,
// carried over TLS to the route's real server. Both directions run at once;
// each reads again only after its last piece has been written to the other
// side, so a slow reader slows the writer instead of filling memory.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include <asio/ip/tcp.hpp>
#include <asio/steady_timer.hpp>

#include "sslbridge/tls_client.h"

namespace brindle::sslbridge {

struct RelayTarget {
  uint16_t routePort = 0;  // the loopback port the client came in on (for the log)
  std::string host;
  uint16_t port = 0;
};

class Relay : public std::enable_shared_from_this<Relay> {
 public:
  using ClosedHandler = std::function<void(Relay*)>;

  Relay(asio::ip::tcp::socket client, RelayTarget target, const TlsClientContext& tls,
        std::chrono::milliseconds handshakeLimit, ClosedHandler onClosed);
  ~Relay();

  void Start();
  // Ends both sides at once (program end).
  void Abort();

 private:
  enum class Wait { kRead, kWrite };
  static constexpr size_t kBufferSize = 64 * 1024;

  void OnConnected();
  void Handshake();
  void StartPumps();
  void ReadClient();
  void WriteServer(size_t offset, size_t length);
  void SendCloseNotify();
  void ReadServer();
  void WriteClient(size_t length);
  void ServerFinished();
  void MaybeFinish();
  void Fail(const std::string& why);
  void WaitServer(Wait wait, void (Relay::*next)());
  void ArmTimer(std::chrono::milliseconds limit, const char* what);
  std::string Name() const;

  asio::ip::tcp::socket client_;
  asio::ip::tcp::socket server_;
  asio::ip::tcp::resolver resolver_;
  asio::steady_timer timer_;
  RelayTarget target_;
  const TlsClientContext& tls_;
  std::chrono::milliseconds handshakeLimit_;
  ClosedHandler onClosed_;
  SslPtr ssl_;
  bool established_ = false;
  bool closed_ = false;
  bool clientDone_ = false;  // the client stopped sending; close_notify is due or sent
  bool serverDone_ = false;  // the server stopped sending; the client has been told
  size_t pendingUp_ = 0, pendingUpOffset_ = 0;
  std::array<char, kBufferSize> up_;    // client -> server
  std::array<char, kBufferSize> down_;  // server -> client
};

}  // namespace brindle::sslbridge
