// The main form as the entry procedure uses it: its load (companion,
// settings, tunnels), the settings it loaded, and the close-down of the
// tunnels and the companion at the end.
#pragma once

#include <memory>

#include "core/settings.h"

namespace brindle::app {

class MainForm {
 public:
  virtual ~MainForm() = default;
  // Runs the load sequence; false when the program must end (its box has
  // been shown then).
  virtual bool Load() = 0;
  virtual std::shared_ptr<const Settings> CurrentSettings() = 0;
  // Closes every channel and tunnel and tells the companion to quit; returns
  // when that is done.
  virtual void CloseTunnels() = 0;
};

}  // namespace brindle::app
