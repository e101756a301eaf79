#include "proxy/channel_pair.h"

#include <exception>
#include <limits>

#include <asio/connect.hpp>
#include <asio/write.hpp>

#include "core/log.h"
#include "localnet/peer_owner.h"
#include "proxy/channel_registry.h"

namespace brindle {

using asio::ip::tcp;
using Clock = std::chrono::steady_clock;

namespace {

// The composed write otherwise hands the socket at most 64 KiB per call;
// a whole piece in one call lets the kernel take as much as it can.
size_t WholeRemainder(const std::error_code& ec, size_t) {
  return ec ? 0 : std::numeric_limits<size_t>::max();
}

std::string Seconds(std::chrono::milliseconds limit) {
  return std::to_string(std::chrono::duration_cast<std::chrono::seconds>(limit).count()) + " s";
}

}  // namespace

ChannelPair::ChannelPair(asio::io_context& io, int16_t index, tcp::socket client,
                         const ChannelTarget& target, ChannelServices services,
                         ChannelTimeouts timeouts, std::weak_ptr<ChannelRegistry> registry)
    : index_(index),
      target_(target),
      channel_(index, services),
      timeouts_(timeouts),
      registry_(std::move(registry)),
      client_(std::move(client)),
      server_(io),
      resolver_(io),
      watchdog_(io),
      up_{client_, server_, true, {}, {}},
      down_{server_, client_, false, {}, {}} {
  channel_.cType(target.type);
  if (target_.traffic) ++target_.traffic->channels;
  channel_.tunnelName = target.tunnelName;
}

ChannelPair::~ChannelPair() {
  if (target_.traffic) --target_.traffic->channels;
  if (auto registry = registry_.lock()) registry->PairDestroyed(index_);
}

void ChannelPair::Start() {
  Safely("start", [this] { Begin(); });
}

void ChannelPair::Begin() {
  lastActivity_ = Clock::now();
  serverOwes_ = lastActivity_;  // the connect and the greeting
  Watch();
  std::error_code ec;
  auto address = asio::ip::make_address(target_.host, ec);
  if (!ec) {
    ConnectTo(tcp::resolver::results_type::create(tcp::endpoint(address, target_.port),
                                                  target_.host, std::to_string(target_.port)));
    return;
  }
  resolver_.async_resolve(target_.host, std::to_string(target_.port),
                          [self = shared_from_this()](std::error_code ec, auto results) {
                            if (ec) return self->Ended("server name lookup", ec);
                            self->Safely("connect", [&] { self->ConnectTo(results); });
                          });
}

void ChannelPair::ConnectTo(const tcp::resolver::results_type& endpoints) {
  if (closed_) return;
  asio::async_connect(server_, endpoints,
                      [self = shared_from_this()](std::error_code ec, const tcp::endpoint&) {
                        if (ec) return self->Ended("server connect", ec);
                        self->Safely("connect", [&] { self->Connected(); });
                      });
}

void ChannelPair::Connected() {
  if (!RouteIsTheCompanions()) return Ended("route check", {});
  std::error_code ignored;
  const auto local = server_.local_endpoint(ignored);
  if (!ignored) channel_.ServerConnected(local.address().to_string());
  NoDelay();
  Pump(down_);
  Pump(up_);
}

// Any user may listen on a free loopback port; the client's login must reach
// only the companion that this user's program started.
bool ChannelPair::RouteIsTheCompanions() {
  if (!target_.companionRoute) return true;
  const localnet::PeerOwner owner = localnet::OwnerOfPeer(server_);
  if (owner != localnet::PeerOwner::kOtherUser) return true;
  log::Warning("Channel " + std::to_string(index_) +
               ": route port 127.0.0.1:" + std::to_string(target_.port) +
               " is held by another user's program, not the companion: channel refused");
  return false;
}

// A relay must not hold back small pieces: each one was already sent as its
// own write by the side it came from.
void ChannelPair::NoDelay() {
  std::error_code ignored;
  client_.set_option(tcp::no_delay(true), ignored);
  server_.set_option(tcp::no_delay(true), ignored);
}

void ChannelPair::Pump(Direction& d) {
  if (closed_) return;
  if (d.piece.size() != kReadSize) d.piece.resize(kReadSize);
  d.from.async_read_some(
      asio::buffer(d.piece), [self = shared_from_this(), &d](std::error_code ec, size_t n) {
        if (ec) return self->Ended(d.fromClient ? "client side" : "server side", ec);
        self->Safely(d.fromClient ? "client data" : "server data", [&] { self->Forward(d, n); });
      });
}

void ChannelPair::Forward(Direction& d, size_t n) {
  lastActivity_ = Clock::now();
  (d.fromClient ? fromClientTotal_ : fromServerTotal_) += n;
  if (target_.traffic)
    (d.fromClient ? target_.traffic->fromClient : target_.traffic->fromServer) += n;
  if (!d.fromClient) serverOwes_.reset();
  d.piece.resize(n);
  d.out = d.fromClient ? channel_.ProcessClientData(std::move(d.piece))
                       : channel_.ProcessServerData(std::move(d.piece));
  if (channel_.Ending()) return SayFarewell();
  if (d.out.empty()) return Pump(d);
  if (d.fromClient) {  // the server's answer is due within its limit of the client's last byte
    serverOwes_ = lastActivity_;
    Watch();
  }
  asio::async_write(d.to, asio::buffer(d.out), WholeRemainder,
                    [self = shared_from_this(), &d](std::error_code ec, size_t) {
                      if (ec)
                        return self->Ended(d.fromClient ? "server write" : "client write", ec);
                      self->lastActivity_ = Clock::now();
                      self->Safely("write", [&] { self->Written(d); });
                    });
}

void ChannelPair::Written(Direction& d) {
  d.out.clear();
  if (d.out.capacity() > 2 * kReadSize) {
    // A held message's storage goes back as soon as the message has gone:
    // an open connection keeps no more than its read buffers.
    d.out.shrink_to_fit();
  } else if (d.out.capacity() >= kReadSize) {
    // A piece passed on unchanged comes back as the next read's buffer.
    std::swap(d.piece, d.out);
  }
  Pump(d);
}

// One timer serves both limits: it is set for the nearer deadline and, when
// it fires, checks again, because activity since then moves the deadlines.
void ChannelPair::Watch() {
  if (closed_) return;
  Clock::time_point due = lastActivity_ + timeouts_.clientIdle;
  if (serverOwes_ && *serverOwes_ + timeouts_.serverWait < due)
    due = *serverOwes_ + timeouts_.serverWait;
  if (armedFor_ && *armedFor_ <= due) return;  // an earlier check comes first anyway
  armedFor_ = due;
  watchdog_.expires_at(due);
  watchdog_.async_wait([weak = weak_from_this()](std::error_code ec) {
    auto self = weak.lock();
    if (ec || !self) return;
    self->armedFor_.reset();
    self->Safely("time limit", [&] { self->Expired(); });
  });
}

void ChannelPair::Expired() {
  if (closed_) return;
  const Clock::time_point now = Clock::now();
  if (serverOwes_ && now >= *serverOwes_ + timeouts_.serverWait) {
    log::Warning("Channel " + std::to_string(index_) + ": no answer from " + target_.host + ":" +
                 std::to_string(target_.port) + " within " + Seconds(timeouts_.serverWait) +
                 " (BRINDLE_SERVER_WAIT_SECONDS); channel closed");
    return Ended("server wait", {});
  }
  if (now >= lastActivity_ + timeouts_.clientIdle) {
    log::Info("Channel " + std::to_string(index_) + ": nothing moved for " +
              Seconds(timeouts_.clientIdle) + " (BRINDLE_CLIENT_IDLE_SECONDS); channel closed");
    return Ended("idle", {});
  }
  Watch();
}

// The channel broke a limit: its error answer goes to the client (after
// anything still being written there), then both sides close.
void ChannelPair::SayFarewell() {
  if (closed_ || farewellSent_) return;
  farewellSent_ = true;
  farewell_ = channel_.Farewell();
  // A write to the client still under way would interleave with it.
  if (farewell_.empty() || !down_.out.empty()) return Ended("limit", {});
  asio::async_write(
      client_, asio::buffer(farewell_),
      [self = shared_from_this()](std::error_code, size_t) { self->Ended("limit", {}); });
}

// No exception may leave a handler: the event loop serves every other
// channel and tunnel. Out of memory while serving this one ends it alone.
template <class Step>
void ChannelPair::Safely(const char* what, Step&& step) {
  try {
    step();
  } catch (const std::exception& e) {
    log::Warning("Channel " + std::to_string(index_) + " ended (" + what + "): " + e.what());
    Ended(what, {});
  }
}

void ChannelPair::Ended(const char* what, const std::error_code& ec) {
  if (closed_) return;
  if (ec && ec != asio::error::eof && ec != asio::error::operation_aborted) {
    const std::string text = "Channel " + std::to_string(index_) + " " + what + ": " + ec.message();
    // Failing to reach the server is what a user needs to see; a peer that
    // resets an established connection is everyday traffic.
    const std::string_view step(what);
    if (step == "server connect" || step == "server name lookup") {
      log::Warning(text + " (" + target_.host + ":" + std::to_string(target_.port) + ")");
    } else {
      log::Debug(text);
    }
  }
  if (auto registry = registry_.lock()) {
    registry->Remove(index_);
  } else {
    Close();
  }
}

void ChannelPair::Close() {
  if (closed_) return;
  closed_ = true;
  std::error_code ignored;
  resolver_.cancel();
  watchdog_.cancel();
  client_.shutdown(tcp::socket::shutdown_both, ignored);
  client_.close(ignored);
  server_.shutdown(tcp::socket::shutdown_both, ignored);
  server_.close(ignored);
}

}  // namespace brindle
