// The current settings, published as immutable snapshots. A change builds a
// new Settings and replaces the snapshot whole; readers (a channel processing
// a message, a window) take the snapshot once and keep it for that piece of
// work, so they never see half of a change.
#pragma once

#include <memory>
#include <mutex>

#include "core/settings.h"

namespace brindle {

class SettingsStore {
 public:
  SettingsStore() : current_(std::make_shared<const Settings>()) {}
  explicit SettingsStore(Settings initial)
      : current_(std::make_shared<const Settings>(std::move(initial))) {}

  std::shared_ptr<const Settings> Current() const {
    std::lock_guard lock(m_);
    return current_;
  }

  void Replace(Settings next) { Replace(std::make_shared<const Settings>(std::move(next))); }
  void Replace(std::shared_ptr<const Settings> next) {
    std::lock_guard lock(m_);
    current_ = std::move(next);
  }

 private:
  mutable std::mutex m_;
  std::shared_ptr<const Settings> current_;
};

}  // namespace brindle
