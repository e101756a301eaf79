#include "proxy/proxy.h"

#include <asio/post.hpp>

#include "core/log.h"
#include "proxy/channel_registry.h"
#include "proxy/companion_link.h"
#include "proxy/filter_records.h"
#include "proxy/message_steps.h"
#include "proxy/route_ports.h"
#include "proxy/socket_pools.h"
#include "proxy/transfer_display.h"
#include "proxy/tunnel.h"

namespace brindle {

// Declared so that what outlives what is plain: the tunnels go first, then
// the channels, then what both of them use.
struct Proxy::Impl {
  Impl(asio::io_context& io, SettingsStore& settings, ProxyOptions options)
      : io(io),
        settings(settings),
        options(options),
        steps(options.steps ? *options.steps : DefaultMessageSteps()),
        companion(std::make_shared<CompanionLink>(io, options.companionControlPort,
                                                  options.companionKey)),
        records(std::make_shared<FilterRecords>(io, settings, options.spammerListLook)),
        channels(std::make_shared<ChannelRegistry>(
            io, ChannelServices{settings, steps, display, *records}, options.timeouts)) {
    records->Start();
  }

  ~Impl() {
    channels->CloseAll();
    tunnels.clear();
    records->Stop();
  }

  TunnelServices TunnelContext() {
    return {io, settings, relays, routePorts, channels, companion, options.firstSslPort};
  }

  asio::io_context& io;
  SettingsStore& settings;
  ProxyOptions options;
  MessageSteps& steps;
  TransferDisplay display;
  RelaySocketPool relays;
  RoutePorts routePorts;
  std::shared_ptr<CompanionLink> companion;
  std::shared_ptr<FilterRecords> records;
  std::shared_ptr<ChannelRegistry> channels;
  std::vector<std::unique_ptr<CTunnel>> tunnels;
  bool quitSent = false;
};

Proxy::Proxy(asio::io_context& io, SettingsStore& settings, ProxyOptions options)
    : impl_(std::make_unique<Impl>(io, settings, options)) {}

Proxy::~Proxy() = default;

CTunnel& Proxy::AddTunnel(const TunnelRecord& record, std::function<void(int error)> started) {
  auto tunnel = std::make_unique<CTunnel>(impl_->TunnelContext());
  tunnel->Server = record.Server;
  tunnel->SrcPort = record.SrcPort;
  tunnel->DestPort = record.DestPort;
  tunnel->AutoStart = record.AutoStart;
  tunnel->SSL = record.SSL;
  tunnel->StartTLS = record.StartTLS;
  tunnel->tType(record.tType);
  CTunnel& added = *tunnel;
  impl_->tunnels.push_back(std::move(tunnel));
  if (added.AutoStart) added.start(std::move(started));
  return added;
}

bool Proxy::RemoveTunnel(size_t position) {
  if (position >= impl_->tunnels.size()) return false;
  impl_->tunnels.erase(impl_->tunnels.begin() + static_cast<std::ptrdiff_t>(position));
  return true;
}

const std::vector<std::unique_ptr<CTunnel>>& Proxy::Tunnels() const {
  return impl_->tunnels;
}

size_t Proxy::ChannelCount() const {
  return impl_->channels->Count();
}

void Proxy::ForEachChannel(const std::function<void(const ChannelPair&)>& visit) const {
  impl_->channels->ForEach(visit);
}

const StepCounts& Proxy::Counts() const {
  return impl_->steps.counts;
}

void Proxy::SetDisplayTransferredData(bool on) {
  impl_->display.SetEnabled(on);
}

void Proxy::SetDisplayObserver(
    std::function<void(const std::string& recent, size_t connections)> f) {
  impl_->display.SetObserver(std::move(f));
}

const TransferDisplay& Proxy::Display() const {
  return impl_->display;
}

void Proxy::ProbeCompanion(std::function<void(bool up)> done) {
  impl_->companion->Probe([done = std::move(done)](bool up) {
    log::Debug(up ? "Companion answers on its control port" : "Companion not answering");
    if (done) done(up);
  });
}

void Proxy::RestoreRoutes(std::function<void()> done) {
  auto pending = std::make_shared<size_t>(impl_->tunnels.size() + 1);
  auto one = [pending, done = std::move(done)] {
    if (--*pending == 0 && done) done();
  };
  for (auto& tunnel : impl_->tunnels) tunnel->RestoreRoute(one);
  asio::post(impl_->io, one);
}

void Proxy::CloseDown(std::function<void()> done) {
  impl_->channels->CloseAll();
  impl_->tunnels.clear();  // each stops; SSL tunnels queue their "d:" first
  impl_->records->Stop();
  if (impl_->quitSent) {
    if (done) asio::post(impl_->io, std::move(done));
    return;
  }
  impl_->quitSent = true;
  impl_->companion->Send(CompanionLink::Quit(), CompanionLink::kQuitConnectLimit,
                         [done = std::move(done)](bool, const std::string&) {
                           if (done) done();
                         });
}

}  // namespace brindle
