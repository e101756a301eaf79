#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "rewrite/data_files.h"

namespace brindle::datafile {

std::optional<FileStamp> Stamp(const std::string& path) {
  struct stat st;
  if (stat(path.c_str(), &st) != 0) return std::nullopt;
  return FileStamp{static_cast<int64_t>(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec,
                   static_cast<int64_t>(st.st_size), static_cast<uint64_t>(st.st_ino),
                   S_ISREG(st.st_mode)};
}

bool Append(const std::string& path, std::string_view bytes) {
  // Not held up by a pipe planted at the path: with no reader it fails at once.
  const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NONBLOCK, 0644);
  if (fd < 0) return false;
  bool ok = true;
  while (ok && !bytes.empty()) {
    const ssize_t n = write(fd, bytes.data(), bytes.size());
    if (n < 0 && errno == EINTR) continue;
    ok = n > 0;
    if (ok) bytes.remove_prefix(static_cast<size_t>(n));
  }
  return close(fd) == 0 && ok;
}

bool MoveOver(const std::string& from, const std::string& to) {
  return std::rename(from.c_str(), to.c_str()) == 0;
}

std::string LocalTimeText(std::time_t when) {
  struct tm local;
  char text[32] = "";
  if (localtime_r(&when, &local)) std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
  return text;
}

}  // namespace brindle::datafile
