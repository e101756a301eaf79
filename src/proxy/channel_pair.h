// The two connections of one channel (client side accepted by a tunnel,
// server side connected by the channel) and the relaying between them.
// Each direction reads its next piece only after the previous one has been
// written to the other side, so a channel never holds more than the message
// it collects plus one read. When either side closes or fails, or a peer
// stays silent past its time limit, the channel ends: no farewell is sent
// to the other side.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include <asio/ip/tcp.hpp>
#include <asio/steady_timer.hpp>

#include "proxy/channel.h"
#include "proxy/channel_timeouts.h"

namespace brindle {

class ChannelRegistry;

// Bytes a tunnel's channels have carried since start, and its live channels.
struct TunnelTraffic {
  uint64_t fromClient = 0;
  uint64_t fromServer = 0;
  size_t channels = 0;
};

// Where a channel's server side goes: the real server, or the companion's
// loopback port for a tunnel that uses TLS.
struct ChannelTarget {
  int32_t type = kTypeUnset;
  std::string host;
  uint16_t port = 0;
  std::string tunnelName;  // for the filter log: "NNTP 1119 news.example.org"
  // The tunnel's running totals, which outlive its channels (may be null).
  std::shared_ptr<TunnelTraffic> traffic;
  // The port is a companion route: whoever listens there must be this
  // user's program before the client's first byte goes to it.
  bool companionRoute = false;
};

class ChannelPair : public std::enable_shared_from_this<ChannelPair> {
 public:
  ChannelPair(asio::io_context& io, int16_t index, asio::ip::tcp::socket client,
              const ChannelTarget& target, ChannelServices services, ChannelTimeouts timeouts,
              std::weak_ptr<ChannelRegistry> registry);
  ~ChannelPair();
  ChannelPair(const ChannelPair&) = delete;
  ChannelPair& operator=(const ChannelPair&) = delete;

  // Connects the server side; relaying starts once it is up.
  void Start();
  // Closes both sides at once (pending reads and writes are abandoned).
  void Close();

  CChannel& Channel() { return channel_; }
  const CChannel& Channel() const { return channel_; }
  uint64_t BytesFromClient() const { return fromClientTotal_; }
  uint64_t BytesFromServer() const { return fromServerTotal_; }

 private:
  // Large pieces: a relay's throughput is bounded by the number of system
  // calls per byte, and the protocol work per piece does not grow with it.
  static constexpr size_t kReadSize = 256 * 1024;

  // One direction of the relay: read a piece from `from`, let the channel
  // process it, write the result to `to`, read again.
  struct Direction {
    asio::ip::tcp::socket& from;
    asio::ip::tcp::socket& to;
    bool fromClient;
    std::string piece;  // the read buffer
    std::string out;    // what is being written
  };

  void ConnectTo(const asio::ip::tcp::resolver::results_type& endpoints);
  bool RouteIsTheCompanions();
  void NoDelay();
  void Begin();
  void Connected();
  void Pump(Direction& d);
  void Forward(Direction& d, size_t n);
  void Written(Direction& d);
  template <class Step>
  void Safely(const char* what, Step&& step);
  void SayFarewell();
  void Ended(const char* what, const std::error_code& ec);
  void Watch();
  void Expired();

  int16_t index_;
  ChannelTarget target_;
  CChannel channel_;
  ChannelTimeouts timeouts_;
  std::weak_ptr<ChannelRegistry> registry_;
  asio::ip::tcp::socket client_;
  asio::ip::tcp::socket server_;
  asio::ip::tcp::resolver resolver_;
  asio::steady_timer watchdog_;
  std::chrono::steady_clock::time_point lastActivity_;
  // Since when the server owes a first byte (its greeting, or an answer).
  std::optional<std::chrono::steady_clock::time_point> serverOwes_;
  std::optional<std::chrono::steady_clock::time_point> armedFor_;
  Direction up_;
  Direction down_;
  std::string farewell_;
  bool farewellSent_ = false;
  uint64_t fromClientTotal_ = 0;
  uint64_t fromServerTotal_ = 0;
  bool closed_ = false;
};

}  // namespace brindle
