#include "core/settings_defaults.h"

namespace brindle {

// No system-wide window colour to follow here: white, as on a default desktop.
std::string SystemWindowColour() {
  return "FFFFFF";
}

}  // namespace brindle
