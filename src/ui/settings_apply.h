// The one way new settings take effect, whichever view asks (the options
// window's OK/Apply, a menu toggle, the browser pages): the new snapshot is
// published, the settings file is written once (atomically), and the
// tunnels whose record changed are stopped and started again with their
// routes. Channels already running keep the snapshot they took.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "core/settings.h"
#include "core/settings_store.h"
#include "ui/tunnel_control.h"

namespace brindle::ui {

// For each tunnel of `after`, the position in `before` it was loaded from,
// or none for a new one; `origins` empty means "position for position".
// Records compared equal stay as they run. Tunnels are kept only while their
// order is unchanged and no new one comes before them; a moved tunnel is
// removed and added again, so that the running order stays the settings
// order.
TunnelPlan PlanTunnels(const std::vector<TunnelRecord>& before,
                       const std::vector<TunnelRecord>& after,
                       const std::vector<std::optional<size_t>>& origins);

class SettingsApplier {
 public:
  // Writes the whole file (SaveSettings2Ini by default); false on failure.
  using Save = std::function<bool(const Settings&)>;

  // `tunnels` may be null when no proxy runs (tests, start-up).
  SettingsApplier(SettingsStore& store, TunnelControl* tunnels, Save save = {});

  // Publishes `next`, saves it and reconfigures the tunnels. Returns whether
  // the file was written; the snapshot is published either way, as the
  // running program follows what the user chose. `tunnelsDone` runs (on the
  // calling thread) once the tunnels are reconfigured.
  bool Apply(Settings next, const std::vector<std::optional<size_t>>& tunnelOrigins = {},
             std::function<void()> tunnelsDone = {});

  SettingsStore& store() { return store_; }

 private:
  SettingsStore& store_;
  TunnelControl* tunnels_;
  Save save_;
};

}  // namespace brindle::ui
