// The note windows already reworked: 101 slots of window handles (0 means
// free), so that a window that stays in front is reworked once. A slot is
// freed once its window is gone; when all are taken, a further window is not
// recorded and is reworked again each time it is in front.
#pragma once

#include <array>
#include <cstdint>
#include <functional>

namespace brindle {

using WindowId = uintptr_t;  // a window handle as a number; 0 is none

class ProcessedWindows {
 public:
  static constexpr size_t kSlots = 101;

  // Stores the handle in the first free slot; a full table drops it.
  void Add(WindowId window);
  bool Contains(WindowId window) const;
  // Frees the slot of every window for which `exists` says no.
  void Purge(const std::function<bool(WindowId)>& exists);

 private:
  std::array<WindowId, kSlots> slots_{};
};

}  // namespace brindle
