#include "proxy/tunnel.h"

#include <asio/post.hpp>

#include "core/log.h"
#include "core/message_box.h"
#include "localnet/listener_options.h"
#include "proxy/tunnel_error.h"

namespace brindle {

using asio::ip::tcp;

namespace {
// A route port that another program took between the probe and the
// companion's bind is given up for the next free one, this many times.
constexpr int kRouteAttempts = 3;
}  // namespace

CTunnel::CTunnel(TunnelServices services)
    : services_(std::move(services)),
      retry_(services_.io),
      intRelayIndex_(services_.relays.GetRelaySocket()) {}

CTunnel::~CTunnel() {
  StopServer();
  services_.relays.FreeRelaySocket(intRelayIndex_);
}

int CTunnel::start(std::function<void(int)> done) {
  if (blnRunning_) {  // a running tunnel is never re-bound
    if (done) asio::post(services_.io, [done] { done(0); });
    return 0;
  }
  std::error_code ec = Listen();
  const int error = TunnelErrorNumber(ec);
  startError_ = error;
  if (error == 0) {
    blnRunning_ = true;
    // A tunnel through the companion accepts once it listens on the route's port,
    // so that no channel is aimed at a port nobody holds yet.
    if (!ThroughCompanion()) ArmAccept();
  } else {
    ShowStartError(error, ec);
  }
  if (!ThroughCompanion()) {
    if (done) asio::post(services_.io, [done, error] { done(error); });
    return error;
  }
  if (routeClaimed_) services_.routePorts.Release(srcSSLPort_);
  srcSSLPort_ = FindFreeLocalPort();
  services_.routePorts.Claim(srcSSLPort_);
  routeClaimed_ = true;
  RegisterRoute(kRouteAttempts, [done, error] {
    if (done) done(error);
  });
  return error;
}

void CTunnel::RestoreRoute(std::function<void()> done) {
  if (!ThroughCompanion() || !blnRunning_) {
    if (done) asio::post(services_.io, std::move(done));
    return;
  }
  RegisterRoute(kRouteAttempts, std::move(done));
}

void CTunnel::RegisterRoute(int attemptsLeft, std::function<void()> done) {
  std::weak_ptr<int> alive = alive_;
  const uint64_t generation = generation_;
  const uint16_t port = srcSSLPort_;
  services_.companion->Send(
      SSL ? CompanionLink::AddRoute(port, Server, DestPort)
          : CompanionLink::AddUpgradedRoute(port, Server, DestPort, tType_),
      CompanionLink::kRouteConnectLimit,
      [this, alive, generation, port, attemptsLeft, done](bool, const std::string& answer) {
        if (alive.expired() || generation != generation_ || port != srcSSLPort_) {
          if (done) done();
          return;
        }
        if (answer.rfind("ERR cannot listen", 0) == 0 && attemptsLeft > 1) {
          log::Warning("Tunnel on port " + std::to_string(SrcPort) + ": the companion " + answer +
                       " on route port " + std::to_string(port) + "; trying another port");
          // The refused port stays claimed, so the search passes it by.
          srcSSLPort_ = FindFreeLocalPort();
          services_.routePorts.Claim(srcSSLPort_);
          return RegisterRoute(attemptsLeft - 1, done);
        }
        if (answer.rfind("ERR", 0) == 0) {
          log::Warning("Tunnel on port " + std::to_string(SrcPort) +
                       ": the companion refused route " + std::to_string(port) + ": " + answer);
        }
        ArmAccept();
        if (done) done();
      });
}

std::error_code CTunnel::Listen() {
  ++generation_;
  acceptArmed_ = false;
  waitingForPair_ = false;
  acceptor_ = std::make_unique<tcp::acceptor>(services_.io);
  if (intRelayIndex_ < 1) return asio::error::no_descriptors;  // all 100 listeners taken
  if (SrcPort < 0 || SrcPort > 65535) return asio::error::invalid_argument;
  std::error_code ec;
  acceptor_->open(tcp::v4(), ec);
  if (ec) return ec;
  localnet::PrepareListener(*acceptor_);
  acceptor_->bind(tcp::endpoint(asio::ip::address_v4::loopback(), static_cast<uint16_t>(SrcPort)),
                  ec);
  if (!ec) acceptor_->listen(asio::socket_base::max_listen_connections, ec);
  if (ec) {
    std::error_code ignored;
    acceptor_->close(ignored);
  }
  return ec;
}

void CTunnel::ShowStartError(int error, const std::error_code& ec) {
  const int16_t language = services_.settings.Current()->intLanguage;
  log::Warning("Tunnel on port " + std::to_string(SrcPort) + " not started: " + ec.message());
  ShowMessageBox(TunnelStartErrorText(language, error, SrcPort, ec.message()),
                 TunnelStartErrorTitle(language), BoxIcon::kExclamation);
}

// The lowest loopback port from firstSslPort on that is free right now and
// not promised to another route; the companion binds it once it has the route.
uint16_t CTunnel::FindFreeLocalPort() {
  for (uint32_t port = services_.firstSslPort; port <= 65535; ++port) {
    tcp::acceptor probe(services_.io);
    std::error_code ec;
    probe.open(tcp::v4(), ec);
    if (!ec) probe.bind(tcp::endpoint(asio::ip::address_v4::loopback(), port), ec);
    if (!ec) probe.listen(1, ec);
    if (ec == asio::error::address_in_use || services_.routePorts.Taken(port)) continue;
    return static_cast<uint16_t>(port);
  }
  return services_.firstSslPort;
}

void CTunnel::StopServer(std::function<void()> done) {
  if (blnRunning_) {
    std::error_code ignored;
    acceptor_->close(ignored);  // established channels live on
    ++generation_;
    retry_.cancel();
  }
  blnRunning_ = false;
  if (routeClaimed_) {  // the withdrawal is queued before any later claim's "a:"
    services_.routePorts.Release(srcSSLPort_);
    routeClaimed_ = false;
  }
  if (!ThroughCompanion()) {
    if (done) asio::post(services_.io, std::move(done));
    return;
  }
  services_.companion->Send(CompanionLink::DeleteRoute(srcSSLPort_),
                            CompanionLink::kRouteConnectLimit, [done](bool, const std::string&) {
                              if (done) done();
                            });
}

ChannelTarget CTunnel::Target() const {
  static const char* const kProtocol[] = {"NNTP", "POP3", "SMTP"};
  std::string name = tType_ >= kTypeNntp && tType_ <= kTypeSmtp ? kProtocol[tType_] : "?";
  name += " " + std::to_string(SrcPort) + " " + Server;
  if (ThroughCompanion()) return {tType_, "127.0.0.1", srcSSLPort_, std::move(name), traffic_, true};
  return {tType_, Server, static_cast<uint16_t>(DestPort), std::move(name), traffic_, false};
}

// Accepts only while a channel pair is free; otherwise new connections wait
// in the listener's backlog until one frees.
void CTunnel::ArmAccept() {
  if (!blnRunning_ || acceptArmed_) return;
  std::weak_ptr<int> alive = alive_;
  const uint64_t generation = generation_;
  if (!services_.channels->HasFreePair()) {
    if (waitingForPair_) return;
    waitingForPair_ = true;
    services_.channels->WhenPairFree([this, alive, generation] {
      if (alive.expired() || generation != generation_) return;
      waitingForPair_ = false;
      ArmAccept();
    });
    return;
  }
  acceptArmed_ = true;
  acceptor_->async_accept([this, alive, generation](std::error_code ec, tcp::socket client) {
    if (alive.expired() || generation != generation_) return;
    acceptArmed_ = false;
    Accepted(ec, std::move(client));
  });
}

void CTunnel::Accepted(std::error_code ec, tcp::socket client) {
  if (ec == asio::error::operation_aborted) return;
  if (ec) {  // e.g. out of descriptors: try again after a growing wait rather than spin
    bool first = false;
    retry_.expires_after(backoff_.Failed(first));
    if (first) {
      log::Warning("Tunnel on port " + std::to_string(SrcPort) +
                   ": accept failed, trying again shortly: " + ec.message());
    }
    std::weak_ptr<int> alive = alive_;
    retry_.async_wait([this, alive](std::error_code ec) {
      if (!ec && !alive.expired()) ArmAccept();
    });
    return;
  }
  backoff_.Succeeded();
  try {
    services_.channels->Open(std::move(client), Target());
  } catch (const std::exception& e) {  // out of memory: this one connection goes
    log::Warning("Tunnel on port " + std::to_string(SrcPort) + ": connection dropped: " + e.what());
  }
  ArmAccept();
}

}  // namespace brindle
