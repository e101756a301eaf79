#include <chrono>
#include <cstdint>
#include <mutex>
#include <random>

#include "rewrite/signature.h"

namespace brindle {
namespace {

class SeededRandomSource final : public RandomSource {
 public:
  SeededRandomSource() {
    std::random_device entropy;
    auto now = static_cast<uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    std::seed_seq seed{entropy(), entropy(), static_cast<unsigned>(now),
                       static_cast<unsigned>(now >> 32)};
    engine_.seed(seed);
  }

  double Next() override {
    std::lock_guard<std::mutex> lock(mutex_);
    // The top 53 bits as a fraction: exactly representable, never 1.0.
    return static_cast<double>(engine_() >> 11) * 0x1.0p-53;
  }

 private:
  std::mutex mutex_;
  std::mt19937_64 engine_;
};

}  // namespace

RandomSource& DefaultRandomSource() {
  static SeededRandomSource source;
  return source;
}

}  // namespace brindle
