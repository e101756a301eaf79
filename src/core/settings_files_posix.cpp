#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "core/settings_files.h"
#include "core/settings_paths.h"

namespace brindle::ini {
namespace {

std::error_code LastError() {
  return {errno, std::generic_category()};
}

bool WriteAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    ssize_t n = ::write(fd, bytes.data(), bytes.size());
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    bytes.remove_prefix(static_cast<size_t>(n));
  }
  return true;
}

}  // namespace

bool FileExists(const std::string& path) {
  struct stat st {};
  return ::stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

bool FolderExists(const std::string& path) {
  struct stat st {};
  return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool MakeFolder(const std::string& path) {
  return ::mkdir(path.c_str(), 0755) == 0;
}

Expected<std::string> ReadFileBytes(const std::string& path) {
  int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return Status::Error("cannot open \"" + path + "\"", LastError());
  std::string bytes;
  char buf[65536];
  for (;;) {
    ssize_t n = ::read(fd, buf, sizeof buf);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) {
      Status failed = Status::Error("cannot read \"" + path + "\"", LastError());
      ::close(fd);
      return failed;
    }
    if (n == 0) break;
    bytes.append(buf, static_cast<size_t>(n));
  }
  ::close(fd);
  return bytes;
}

Status ReplaceFileAtomically(const std::string& path, std::string_view bytes) {
  const std::string temp = path + ".new";
  // The settings are never readable by more people than the old file was: the
  // new one is made with its permissions (the user's alone for a first file).
  struct stat old {};
  const mode_t mode = ::stat(path.c_str(), &old) == 0 ? (old.st_mode & 07777) : 0600;
  // What lies at the temporary name is a save killed half-way, or something
  // planted there: it is removed (a link itself, never its target), and the
  // new file is made only where nothing is, so no byte goes through a link.
  ::unlink(temp.c_str());
  const int fd = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
  if (fd < 0) return Status::Error("cannot create \"" + temp + "\"", LastError());
  bool ok = ::fchmod(fd, mode) == 0 && WriteAll(fd, bytes) && ::fsync(fd) == 0;
  std::error_code error = ok ? std::error_code() : LastError();
  if (::close(fd) != 0 && ok) {
    ok = false;
    error = LastError();
  }
  if (ok && ::rename(temp.c_str(), path.c_str()) != 0) {
    ok = false;
    error = LastError();
  }
  if (!ok) {
    ::unlink(temp.c_str());
    return Status::Error("cannot write \"" + path + "\"", error);
  }
  // The rename lives in the folder: without this a power cut can bring the
  // old file back, or none.
  const int dir = ::open(ParentFolder(path).empty() ? "." : ParentFolder(path).c_str(),
                         O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (dir >= 0) {
    ::fsync(dir);
    ::close(dir);
  }
  return Status::Ok();
}

bool RemoveFile(const std::string& path) {
  return ::unlink(path.c_str()) == 0;
}

}  // namespace brindle::ini
