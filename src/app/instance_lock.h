// One program per settings folder on POSIX: a lock file in that folder, held
// with flock for as long as the program runs. The kernel drops the lock when
// the process ends, however it ends, so a crash never leaves a stale lock.
#pragma once

#include <optional>
#include <string>

namespace brindle::app {

inline constexpr const char* kLockFileName = "OE_Brindle.lock";

class InstanceLock {
 public:
  enum class Result { kAcquired, kHeldByAnother, kFailed };

  // Creates the folder when missing, then takes the lock. `detail` explains
  // a failure.
  static Result Acquire(const std::string& folder, std::optional<InstanceLock>& lock,
                        std::string& detail);

  InstanceLock(InstanceLock&& other) noexcept;
  InstanceLock& operator=(InstanceLock&&) = delete;
  ~InstanceLock();

 private:
  explicit InstanceLock(int fd) : fd_(fd) {}
  int fd_;
};

}  // namespace brindle::app
