#include "oewin/processed_windows.h"

#include <algorithm>

namespace brindle {

void ProcessedWindows::Add(WindowId window) {
  if (window == 0) return;
  const auto free = std::find(slots_.begin(), slots_.end(), WindowId{0});
  if (free != slots_.end()) *free = window;
}

bool ProcessedWindows::Contains(WindowId window) const {
  return window != 0 && std::find(slots_.begin(), slots_.end(), window) != slots_.end();
}

void ProcessedWindows::Purge(const std::function<bool(WindowId)>& exists) {
  for (WindowId& slot : slots_)
    if (slot != 0 && !exists(slot)) slot = 0;
}

}  // namespace brindle
