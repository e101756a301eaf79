#include <errno.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <utility>

#include "app/instance_lock.h"

namespace brindle::app {
namespace {

// mkdir -p: the settings folder may be several levels below an existing one.
bool MakeFolders(const std::string& folder) {
  struct stat info {};
  if (stat(folder.c_str(), &info) == 0) return S_ISDIR(info.st_mode);
  const auto slash = folder.find_last_of('/');
  if (slash != std::string::npos && slash > 0 && !MakeFolders(folder.substr(0, slash)))
    return false;
  return mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST;
}

}  // namespace

InstanceLock::Result InstanceLock::Acquire(const std::string& folder,
                                           std::optional<InstanceLock>& lock, std::string& detail) {
  if (!MakeFolders(folder)) {
    detail = "cannot create the settings folder " + folder + ": " + std::strerror(errno);
    return Result::kFailed;
  }
  const std::string path = folder + "/" + kLockFileName;
  // Close-on-exec: the companion and the client must not inherit the lock,
  // or a client left running would keep the next start out.
  const int fd = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (fd < 0) {
    detail = "cannot open " + path + ": " + std::strerror(errno);
    return Result::kFailed;
  }
  if (flock(fd, LOCK_EX | LOCK_NB) != 0) {
    const int error = errno;
    close(fd);
    if (error == EWOULDBLOCK) return Result::kHeldByAnother;
    detail = "cannot lock " + path + ": " + std::strerror(error);
    return Result::kFailed;
  }
  lock.emplace(InstanceLock(fd));
  return Result::kAcquired;
}

InstanceLock::InstanceLock(InstanceLock&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}

InstanceLock::~InstanceLock() {
  if (fd_ >= 0) close(fd_);
}

}  // namespace brindle::app
