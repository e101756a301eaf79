// The companion itself: the control port that takes route commands, the
// routes (one loopback listener each) and the relays they accept. Runs on one
// io_context; Run returns when "QUIT" has been obeyed.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <system_error>
#include <unordered_map>
#include <vector>

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/steady_timer.hpp>

#include "localnet/accept_backoff.h"
#include "sslbridge/bridge_options.h"
#include "sslbridge/control_command.h"
#include "sslbridge/tls_engine.h"

namespace brindle::sslbridge {

class Relay;
struct RouteTarget;

class Bridge {
 public:
  Bridge(asio::io_context& io, BridgeOptions options);
  ~Bridge();
  Bridge(const Bridge&) = delete;
  Bridge& operator=(const Bridge&) = delete;

  // Listens on 127.0.0.1 at the control port (0: any free port).
  std::error_code Open();
  uint16_t ControlPort() const;

  // What "QUIT" does: listeners closed, relays ended; the io_context then
  // runs out of work.
  void Stop();
  // Runs once when the bridge stops (by QUIT or Stop).
  void OnStopped(std::function<void()> handler) { onStopped_ = std::move(handler); }

  // Carries out one parsed command (the control port's work; also for tests)
  // and returns the line the control connection answers with: "OK", or
  // "ERR " and the reason.
  std::string Execute(const ControlCommand& command);

 private:
  struct Route;
  class ControlSession;

  void AcceptControl();
  std::string AddRoute(const ControlCommand& command);
  std::string DeleteRoute(uint16_t port);
  void AcceptOn(const std::shared_ptr<Route>& route);
  std::shared_ptr<RouteTarget> NewTarget(const Route& route);
  // Warnings about the control port that anyone can cause: a few per minute.
  void ControlWarning(const std::string& text);

  asio::io_context& io_;
  BridgeOptions options_;
  std::vector<std::string> trustProblems_;  // filled while tls_ is built
  std::unique_ptr<TlsEngine> tls_;
  asio::ip::tcp::acceptor control_;
  asio::steady_timer controlRetry_;
  localnet::AcceptBackoff controlBackoff_;
  std::chrono::steady_clock::time_point warningWindow_{};
  int warningsInWindow_ = 0;
  int warningsSuppressed_ = 0;
  std::map<uint16_t, std::shared_ptr<Route>> routes_;
  std::unordered_map<Relay*, std::weak_ptr<Relay>> relays_;
  std::function<void()> onStopped_;
  bool stopped_ = false;
};

}  // namespace brindle::sslbridge
