// How long an accept loop waits after a failed accept before it tries again.
// Out of descriptors (EMFILE, ENFILE), an accept fails at once for as long as
// the shortage lasts: trying again at once would spin a core. The wait
// doubles up to a limit and starts short again after a success.
#pragma once

#include <algorithm>
#include <chrono>

namespace brindle::localnet {

class AcceptBackoff {
 public:
  static constexpr std::chrono::milliseconds kFirst{50};
  static constexpr std::chrono::milliseconds kLongest{2000};

  // The wait before the next try; true in `first` for the first failure of a run.
  std::chrono::milliseconds Failed(bool& first) {
    first = next_ == kFirst;
    auto wait = next_;
    next_ = std::min(next_ * 2, kLongest);
    return wait;
  }
  void Succeeded() { next_ = kFirst; }

 private:
  std::chrono::milliseconds next_ = kFirst;
};

}  // namespace brindle::localnet
