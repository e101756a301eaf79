#include "proxy/tunnel.h"

#include <asio/post.hpp>

#include "core/log.h"
#include "core/message_box.h"
#include "proxy/listener_options.h"
#include "proxy/tunnel_error.h"

namespace brindle {

using asio::ip::tcp;

namespace {
constexpr std::chrono::milliseconds kAcceptRetry{100};
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
    ArmAccept();
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
  services_.companion->Send(
      SSL ? CompanionLink::AddRoute(srcSSLPort_, Server, DestPort)
          : CompanionLink::AddUpgradedRoute(srcSSLPort_, Server, DestPort, tType_),
      CompanionLink::kRouteConnectLimit, [done, error](bool) {
        if (done) done(error);
      });
  return error;
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
  PrepareListener(*acceptor_);
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
                            CompanionLink::kRouteConnectLimit, [done](bool) {
                              if (done) done();
                            });
}

ChannelTarget CTunnel::Target() const {
  static const char* const kProtocol[] = {"NNTP", "POP3", "SMTP"};
  std::string name = tType_ >= kTypeNntp && tType_ <= kTypeSmtp ? kProtocol[tType_] : "?";
  name += " " + std::to_string(SrcPort) + " " + Server;
  if (ThroughCompanion()) return {tType_, "127.0.0.1", srcSSLPort_, std::move(name), traffic_};
  return {tType_, Server, static_cast<uint16_t>(DestPort), std::move(name), traffic_};
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
  if (ec) {  // e.g. out of descriptors: try again shortly rather than spin
    log::Debug("Tunnel on port " + std::to_string(SrcPort) + " accept: " + ec.message());
    std::weak_ptr<int> alive = alive_;
    retry_.expires_after(kAcceptRetry);
    retry_.async_wait([this, alive](std::error_code ec) {
      if (!ec && !alive.expired()) ArmAccept();
    });
    return;
  }
  services_.channels->Open(std::move(client), Target());
  ArmAccept();
}

}  // namespace brindle
