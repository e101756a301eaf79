// The two connections of one channel (client side accepted by a tunnel,
// server side connected by the channel) and the relaying between them.
// Each direction reads its next piece only after the previous one has been
// written to the other side, so a channel never holds more than the message
// it collects plus one read. When either side closes or fails, the channel
// ends: no farewell is sent to the other side.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include <asio/ip/tcp.hpp>

#include "proxy/channel.h"

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
};

class ChannelPair : public std::enable_shared_from_this<ChannelPair> {
 public:
  ChannelPair(asio::io_context& io, int16_t index, asio::ip::tcp::socket client,
              const ChannelTarget& target, ChannelServices services,
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
  static constexpr size_t kReadSize = 64 * 1024;

  void ConnectTo(const asio::ip::tcp::resolver::results_type& endpoints);
  void NoDelay();
  void ReadClient();
  void ReadServer();
  void SayFarewell();
  void Ended(const char* what, const std::error_code& ec);

  int16_t index_;
  ChannelTarget target_;
  CChannel channel_;
  std::weak_ptr<ChannelRegistry> registry_;
  asio::ip::tcp::socket client_;
  asio::ip::tcp::socket server_;
  asio::ip::tcp::resolver resolver_;
  std::array<char, kReadSize> fromClient_;
  std::array<char, kReadSize> fromServer_;
  std::string toServer_;
  std::string toClient_;
  std::string farewell_;
  bool farewellSent_ = false;
  uint64_t fromClientTotal_ = 0;
  uint64_t fromServerTotal_ = 0;
  bool closed_ = false;
};

}  // namespace brindle
