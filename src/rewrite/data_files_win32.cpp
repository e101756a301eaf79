#include <windows.h>

#include "rewrite/data_files.h"

namespace brindle::datafile {
namespace {

int64_t Ticks(const FILETIME& t) {
  return static_cast<int64_t>((static_cast<uint64_t>(t.dwHighDateTime) << 32) | t.dwLowDateTime);
}

}  // namespace

std::optional<FileStamp> Stamp(const std::string& path) {
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (!GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data)) return std::nullopt;
  // A file renamed over this one keeps its own creation time: that tells
  // an atomic replacement apart even within one tick of the write time.
  return FileStamp{
      Ticks(data.ftLastWriteTime),
      static_cast<int64_t>((static_cast<uint64_t>(data.nFileSizeHigh) << 32) | data.nFileSizeLow),
      static_cast<uint64_t>(Ticks(data.ftCreationTime)),
      (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0};
}

bool Append(const std::string& path, std::string_view bytes) {
  HANDLE h = CreateFileA(path.c_str(), FILE_APPEND_DATA,
                         FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                         OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (h == INVALID_HANDLE_VALUE) return false;
  bool ok = true;
  while (ok && !bytes.empty()) {
    DWORD written = 0;
    const DWORD chunk = bytes.size() > (1u << 20) ? (1u << 20) : static_cast<DWORD>(bytes.size());
    ok = WriteFile(h, bytes.data(), chunk, &written, nullptr) && written > 0;
    if (ok) bytes.remove_prefix(written);
  }
  return CloseHandle(h) && ok;
}

bool MoveOver(const std::string& from, const std::string& to) {
  return MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
}

std::string LocalTimeText(std::time_t when) {
  struct tm local;
  char text[32] = "";
  if (localtime_s(&local, &when) == 0)
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
  return text;
}

}  // namespace brindle::datafile
