#include "proxy/channel_pair.h"

#include <exception>

#include <asio/connect.hpp>
#include <asio/write.hpp>

#include "core/log.h"
#include "proxy/channel_registry.h"

namespace brindle {

using asio::ip::tcp;

ChannelPair::ChannelPair(asio::io_context& io, int16_t index, tcp::socket client,
                         const ChannelTarget& target, ChannelServices services,
                         std::weak_ptr<ChannelRegistry> registry)
    : index_(index),
      target_(target),
      channel_(index, services),
      registry_(std::move(registry)),
      client_(std::move(client)),
      server_(io),
      resolver_(io) {
  channel_.cType(target.type);
  if (target_.traffic) ++target_.traffic->channels;
  channel_.tunnelName = target.tunnelName;
}

ChannelPair::~ChannelPair() {
  if (target_.traffic) --target_.traffic->channels;
  if (auto registry = registry_.lock()) registry->PairDestroyed(index_);
}

void ChannelPair::Start() {
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
                            self->ConnectTo(results);
                          });
}

void ChannelPair::ConnectTo(const tcp::resolver::results_type& endpoints) {
  if (closed_) return;
  asio::async_connect(server_, endpoints,
                      [self = shared_from_this()](std::error_code ec, const tcp::endpoint&) {
                        if (ec) return self->Ended("server connect", ec);
                        std::error_code ignored;
                        const auto local = self->server_.local_endpoint(ignored);
                        if (!ignored) self->channel_.ServerConnected(local.address().to_string());
                        self->NoDelay();
                        self->ReadServer();
                        self->ReadClient();
                      });
}

// A relay must not hold back small pieces: each one was already sent as its
// own write by the side it came from.
void ChannelPair::NoDelay() {
  std::error_code ignored;
  client_.set_option(tcp::no_delay(true), ignored);
  server_.set_option(tcp::no_delay(true), ignored);
}

void ChannelPair::ReadClient() {
  if (closed_) return;
  client_.async_read_some(asio::buffer(fromClient_), [self = shared_from_this()](std::error_code ec,
                                                                                 size_t n) {
    if (ec) return self->Ended("client side", ec);
    self->fromClientTotal_ += n;
    if (self->target_.traffic) self->target_.traffic->fromClient += n;
    try {
      self->toServer_ = self->channel_.ProcessClientData(std::string(self->fromClient_.data(), n));
    } catch (const std::exception& e) {
      log::Warning(std::string("Channel ended, client data not processed: ") + e.what());
      return self->Ended("client data", {});
    }
    if (self->channel_.Ending()) return self->SayFarewell();
    if (self->toServer_.empty()) return self->ReadClient();
    asio::async_write(self->server_, asio::buffer(self->toServer_),
                      [self](std::error_code ec, size_t) {
                        if (ec) return self->Ended("server write", ec);
                        self->toServer_.clear();
                        self->ReadClient();
                      });
  });
}

void ChannelPair::ReadServer() {
  if (closed_) return;
  server_.async_read_some(asio::buffer(fromServer_), [self = shared_from_this()](std::error_code ec,
                                                                                 size_t n) {
    if (ec) return self->Ended("server side", ec);
    self->fromServerTotal_ += n;
    if (self->target_.traffic) self->target_.traffic->fromServer += n;
    try {
      self->toClient_ = self->channel_.ProcessServerData(std::string(self->fromServer_.data(), n));
    } catch (const std::exception& e) {
      log::Warning(std::string("Channel ended, server data not processed: ") + e.what());
      return self->Ended("server data", {});
    }
    if (self->channel_.Ending()) return self->SayFarewell();
    if (self->toClient_.empty()) return self->ReadServer();
    asio::async_write(self->client_, asio::buffer(self->toClient_),
                      [self](std::error_code ec, size_t) {
                        if (ec) return self->Ended("client write", ec);
                        self->toClient_.clear();
                        self->ReadServer();
                      });
  });
}

// The channel broke a limit: its error answer goes to the client (after
// anything still being written there), then both sides close.
void ChannelPair::SayFarewell() {
  if (closed_ || farewellSent_) return;
  farewellSent_ = true;
  farewell_ = channel_.Farewell();
  if (farewell_.empty() || !toClient_.empty()) return Ended("limit", {});
  asio::async_write(
      client_, asio::buffer(farewell_),
      [self = shared_from_this()](std::error_code, size_t) { self->Ended("limit", {}); });
}

void ChannelPair::Ended(const char* what, const std::error_code& ec) {
  if (closed_) return;
  if (ec && ec != asio::error::eof) {
    log::Debug("Channel " + std::to_string(index_) + " " + what + ": " + ec.message());
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
  client_.shutdown(tcp::socket::shutdown_both, ignored);
  client_.close(ignored);
  server_.shutdown(tcp::socket::shutdown_both, ignored);
  server_.close(ignored);
}

}  // namespace brindle
