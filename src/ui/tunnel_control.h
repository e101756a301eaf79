// The running tunnels as the options window reaches them. The tunnels live
// on the proxy's thread; every call here only asks, and its answer comes
// back on the thread that asked, through the poster the implementation was
// made with. Positions are those of the settings' tunnel list, which is the
// order of the proxy's tunnels.
#pragma once

#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

#include "core/settings.h"

namespace brindle::ui {

// How the running tunnels change when new settings are applied: tunnels
// whose record changed are stopped and started again with it (routes
// included); removed ones stop and go; added ones are created at the end.
struct TunnelPlan {
  std::vector<std::pair<size_t, TunnelRecord>> restarts;  // position, new record
  std::vector<size_t> removals;                           // highest position first
  std::vector<TunnelRecord> additions;                    // in settings order
  bool Empty() const { return restarts.empty() && removals.empty() && additions.empty(); }
};

class TunnelControl {
 public:
  virtual ~TunnelControl() = default;
  // Whether each tunnel listens, in position order.
  virtual void Running(std::function<void(std::vector<bool>)> done) = 0;
  // `done` gets start's error number (0: listening); a port in use has shown
  // the tunnel-starting box by then. A bad position answers -1.
  virtual void Start(size_t position, std::function<void(int error)> done) = 0;
  virtual void Stop(size_t position, std::function<void()> done) = 0;
  virtual void Reconfigure(TunnelPlan plan, std::function<void()> done) = 0;
};

}  // namespace brindle::ui
