// The live channels (`Channels`, keyed by the decimal text of their pair
// index) with the pool of 100 pairs they come from, shared by every tunnel.
// A client connection that arrives while every pair is busy is held, not
// refused, and gets the next pair that frees; tunnels stop accepting
// meanwhile and are woken then. The channels' time limits make sure that
// silent peers give their pairs back.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>

#include "proxy/channel.h"
#include "proxy/channel_pair.h"
#include "proxy/socket_pools.h"

namespace brindle {

class ChannelRegistry : public std::enable_shared_from_this<ChannelRegistry> {
 public:
  ChannelRegistry(asio::io_context& io, ChannelServices services, ChannelTimeouts timeouts = {});
  ~ChannelRegistry();
  ChannelRegistry(const ChannelRegistry&) = delete;
  ChannelRegistry& operator=(const ChannelRegistry&) = delete;

  // Takes an accepted client connection onto a free pair and starts its
  // channel, or holds it until a pair frees. True while pairs remain free.
  bool Open(asio::ip::tcp::socket client, const ChannelTarget& target);
  bool HasFreePair() const { return pool_.FreeCount() > 0 && held_.empty(); }
  // `resume` runs once, after a pair has been freed.
  void WhenPairFree(std::function<void()> resume);

  // A side of the pair closed or failed: the channel goes (once).
  void Remove(int16_t index);
  void CloseAll();
  // The pair's sockets are gone: the index may be handed out again.
  void PairDestroyed(int16_t index);

  size_t Count() const { return Channels.size(); }
  CChannel* Find(int16_t index);
  // Every live channel, in key order (the status page's table).
  void ForEach(const std::function<void(const ChannelPair&)>& visit) const {
    for (const auto& [key, pair] : Channels) visit(*pair);
  }

 private:
  void ServeWaiting();

  asio::io_context& io_;
  ChannelServices services_;
  ChannelTimeouts timeouts_;
  ChannelSocketPool pool_;
  std::map<std::string, std::shared_ptr<ChannelPair>> Channels;
  std::deque<std::pair<asio::ip::tcp::socket, ChannelTarget>> held_;
  std::vector<std::function<void()>> waiting_;
};

}  // namespace brindle
