// The proxy as the program sees it: the Tunnels and Channels collections on
// one io_context, the companion link, and the close-down at program end.
// Everything here runs on the io_context's thread; the program calls in by
// posting to it.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <asio/io_context.hpp>

#include "core/settings.h"
#include "core/settings_store.h"
#include "proxy/channel_timeouts.h"

namespace brindle {

class CTunnel;
class ChannelPair;
struct StepCounts;
class MessageSteps;
class TransferDisplay;

struct ProxyOptions {
  uint16_t companionControlPort = 5555;  // tests use another port
  uint16_t firstSslPort = 1024;          // where FindFreeLocalPort starts
  MessageSteps* steps = nullptr;         // null: the program's own rewriting and filters
  std::string companionKey;              // the key the companion was started with, if any
  ChannelTimeouts timeouts;
  // How often the spammer list file is looked at for changes.
  std::chrono::milliseconds spammerListLook{1000};
};

class Proxy {
 public:
  Proxy(asio::io_context& io, SettingsStore& settings, ProxyOptions options = {});
  ~Proxy();
  Proxy(const Proxy&) = delete;
  Proxy& operator=(const Proxy&) = delete;

  // Creates a tunnel at the end of Tunnels; starts it when the record says
  // AutoStart. `started` (optional) gets start's error number (0 = listening)
  // once the start, including any route registration, has finished; it is
  // not called when the record does not start the tunnel.
  CTunnel& AddTunnel(const TunnelRecord& record, std::function<void(int error)> started = {});
  // The tunnels dialog removes a tunnel: it stops (withdrawing its route) and
  // goes; its channels live on until they close. False for a bad position.
  bool RemoveTunnel(size_t position);

  const std::vector<std::unique_ptr<CTunnel>>& Tunnels() const;
  size_t ChannelCount() const;
  void ForEachChannel(const std::function<void(const ChannelPair&)>& visit) const;
  // Messages the rewriting and filter steps changed since start.
  const StepCounts& Counts() const;

  // Status page: "Recently transferred data" (kept while enabled, passwords
  // masked) and "Current connections".
  void SetDisplayTransferredData(bool on);
  // Called on the proxy's thread whenever either display changes.
  void SetDisplayObserver(std::function<void(const std::string& recent, size_t connections)> f);
  const TransferDisplay& Display() const;

  // Program start: is the companion answering on its control port (up to 3 s)?
  void ProbeCompanion(std::function<void(bool up)> done);
  // The companion was started again: every running SSL tunnel tells it its
  // route once more. `done` when the last exchange has ended.
  void RestoreRoutes(std::function<void()> done = {});

  // Program end: every channel closed, every tunnel stopped (SSL tunnels
  // withdraw their routes) and dropped, then "QUIT" to the companion, once
  // even when no tunnel uses it. `done` runs when the last exchange has
  // ended. References to tunnels are invalid afterwards.
  void CloseDown(std::function<void()> done);

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace brindle
