#include "ui/proxy_tunnel_control.h"

#include <algorithm>
#include <memory>

#include <asio/post.hpp>

#include "proxy/tunnel.h"

namespace brindle::ui {
namespace {

bool StillThere(const Proxy& proxy, const CTunnel* tunnel) {
  const auto& all = proxy.Tunnels();
  return std::any_of(all.begin(), all.end(), [&](const auto& t) { return t.get() == tunnel; });
}

// Runs `done` when it has been called `count` times (and at once for 0).
std::function<void()> AfterAll(size_t count, std::function<void()> done) {
  if (count == 0) {
    done();
    return [] {};
  }
  auto left = std::make_shared<size_t>(count);
  return [left, done = std::move(done)] {
    if (--*left == 0) done();
  };
}

// Callers may want no word back; an empty callback posted back would throw
// on the other thread instead.
template <typename Callback>
Callback OrNothing(Callback done) {
  if (!done) done = [](auto&&...) {};
  return done;
}

}  // namespace

ProxyTunnelControl::ProxyTunnelControl(asio::io_context& io, std::function<Proxy*()> proxy,
                                       Poster back)
    : io_(io), proxy_(std::move(proxy)), back_(std::move(back)) {}

void ProxyTunnelControl::Running(std::function<void(std::vector<bool>)> done) {
  asio::post(io_, [this, done = OrNothing(std::move(done))] {
    std::vector<bool> running;
    if (Proxy* p = proxy_())
      for (const auto& t : p->Tunnels()) running.push_back(t->IsRunning());
    back_([done, running = std::move(running)] { done(running); });
  });
}

void ProxyTunnelControl::Start(size_t position, std::function<void(int)> done) {
  asio::post(io_, [this, position, done = OrNothing(std::move(done))] {
    Proxy* p = proxy_();
    if (p == nullptr || position >= p->Tunnels().size()) {
      back_([done] { done(-1); });
      return;
    }
    p->Tunnels()[position]->start(
        [this, done](int error) { back_([done, error] { done(error); }); });
  });
}

void ProxyTunnelControl::Stop(size_t position, std::function<void()> done) {
  asio::post(io_, [this, position, done = OrNothing(std::move(done))] {
    Proxy* p = proxy_();
    if (p == nullptr || position >= p->Tunnels().size()) {
      back_(done);
      return;
    }
    p->Tunnels()[position]->StopServer([this, done] { back_(done); });
  });
}

void ProxyTunnelControl::Reconfigure(TunnelPlan plan, std::function<void()> done) {
  asio::post(io_, [this, plan = std::move(plan), done = OrNothing(std::move(done))]() mutable {
    Proxy* p = proxy_();
    if (p == nullptr) {
      back_(done);
      return;
    }
    auto finished =
        AfterAll(plan.restarts.size() + plan.additions.size(), [this, done] { back_(done); });
    // Restarts first, while the positions are still those of the plan.
    for (auto& [position, record] : plan.restarts) {
      if (position >= p->Tunnels().size()) {
        finished();
        continue;
      }
      CTunnel* tunnel = p->Tunnels()[position].get();
      const bool wasRunning = tunnel->IsRunning();
      tunnel->StopServer([p, tunnel, wasRunning, record, finished] {
        if (!StillThere(*p, tunnel)) return finished();
        tunnel->Server = record.Server;
        tunnel->SrcPort = record.SrcPort;
        tunnel->DestPort = record.DestPort;
        tunnel->AutoStart = record.AutoStart;
        tunnel->SSL = record.SSL;
        tunnel->StartTLS = record.StartTLS;
        if (!wasRunning) return finished();
        tunnel->start([finished](int) { finished(); });
      });
    }
    for (size_t position : plan.removals) p->RemoveTunnel(position);
    for (const TunnelRecord& record : plan.additions) {
      if (record.AutoStart)
        p->AddTunnel(record, [finished](int) { finished(); });
      else {
        p->AddTunnel(record);
        finished();
      }
    }
  });
}

}  // namespace brindle::ui
