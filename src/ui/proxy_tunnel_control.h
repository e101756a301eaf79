// TunnelControl over the program's Proxy: each request is posted to the
// proxy's io_context, and each answer is handed to `back`, which runs it on
// the thread that asked (a window's thread posts it there; the browser view,
// already on the io_context, runs it directly).
#pragma once

#include <functional>

#include <asio/io_context.hpp>

#include "proxy/proxy.h"
#include "ui/tunnel_control.h"

namespace brindle::ui {

class ProxyTunnelControl : public TunnelControl {
 public:
  using Poster = std::function<void(std::function<void()>)>;
  // `proxy` is asked on the io_context's thread each time, so the proxy may
  // be made after this object; null there means no tunnels.
  ProxyTunnelControl(asio::io_context& io, std::function<Proxy*()> proxy, Poster back);

  void Running(std::function<void(std::vector<bool>)> done) override;
  void Start(size_t position, std::function<void(int error)> done) override;
  void Stop(size_t position, std::function<void()> done) override;
  void Reconfigure(TunnelPlan plan, std::function<void()> done) override;

 private:
  asio::io_context& io_;
  std::function<Proxy*()> proxy_;
  Poster back_;
};

}  // namespace brindle::ui
