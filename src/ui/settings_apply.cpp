#include "ui/settings_apply.h"

#include <algorithm>

#include "core/log.h"
#include "core/settings_file.h"

namespace brindle::ui {
namespace {

bool SameRecord(const TunnelRecord& a, const TunnelRecord& b) {
  return a.Server == b.Server && a.SrcPort == b.SrcPort && a.DestPort == b.DestPort &&
         a.AutoStart == b.AutoStart && a.SSL == b.SSL && a.tType == b.tType &&
         a.StartTLS == b.StartTLS;
}

}  // namespace

TunnelPlan PlanTunnels(const std::vector<TunnelRecord>& before,
                       const std::vector<TunnelRecord>& after,
                       const std::vector<std::optional<size_t>>& origins) {
  TunnelPlan plan;
  std::vector<bool> kept(before.size(), false);
  bool newSeen = false;
  std::optional<size_t> lastKept;
  for (size_t i = 0; i < after.size(); ++i) {
    std::optional<size_t> origin;
    if (origins.empty()) {
      if (i < before.size()) origin = i;
    } else if (i < origins.size()) {
      origin = origins[i];
    }
    const bool keep = origin && *origin < before.size() && !kept[*origin] && !newSeen &&
                      (!lastKept || *origin > *lastKept) && before[*origin].tType == after[i].tType;
    if (!keep) {
      newSeen = true;
      plan.additions.push_back(after[i]);
      continue;
    }
    kept[*origin] = true;
    lastKept = origin;
    if (!SameRecord(before[*origin], after[i])) plan.restarts.emplace_back(*origin, after[i]);
  }
  for (size_t p = before.size(); p-- > 0;) {
    if (!kept[p]) plan.removals.push_back(p);
  }
  return plan;
}

SettingsApplier::SettingsApplier(SettingsStore& store, TunnelControl* tunnels, Save save)
    : store_(store), tunnels_(tunnels), save_(std::move(save)) {
  if (!save_) save_ = [](const Settings& s) { return SaveSettings2Ini(s).ok(); };
}

bool SettingsApplier::Apply(Settings next, const std::vector<std::optional<size_t>>& tunnelOrigins,
                            std::function<void()> tunnelsDone) {
  std::shared_ptr<const Settings> before = store_.Current();
  TunnelPlan plan = PlanTunnels(before->tunnels, next.tunnels, tunnelOrigins);
  auto published = std::make_shared<const Settings>(std::move(next));
  store_.Replace(published);
  bool saved = false;
  try {
    saved = save_(*published);
  } catch (const std::exception& e) {
    log::Error(std::string("the settings could not be saved: ") + e.what());
  }
  if (tunnels_ == nullptr || plan.Empty()) {
    if (tunnelsDone) tunnelsDone();
  } else {
    tunnels_->Reconfigure(std::move(plan), std::move(tunnelsDone));
  }
  return saved;
}

}  // namespace brindle::ui
