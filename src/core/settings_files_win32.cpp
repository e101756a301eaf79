#include <windows.h>

#include "core/settings_files.h"

namespace brindle::ini {
namespace {

DWORD Attributes(const std::string& path) {
  return GetFileAttributesA(path.c_str());
}

bool WriteAll(HANDLE h, std::string_view bytes) {
  while (!bytes.empty()) {
    DWORD chunk = bytes.size() > 1u << 20 ? 1u << 20 : static_cast<DWORD>(bytes.size());
    DWORD written = 0;
    if (!WriteFile(h, bytes.data(), chunk, &written, nullptr) || written == 0) return false;
    bytes.remove_prefix(written);
  }
  return true;
}

}  // namespace

bool FileExists(const std::string& path) {
  DWORD a = Attributes(path);
  return a != INVALID_FILE_ATTRIBUTES && !(a & FILE_ATTRIBUTE_DIRECTORY);
}

bool FolderExists(const std::string& path) {
  DWORD a = Attributes(path);
  return a != INVALID_FILE_ATTRIBUTES && (a & FILE_ATTRIBUTE_DIRECTORY);
}

bool MakeFolder(const std::string& path) {
  return CreateDirectoryA(path.c_str(), nullptr) != 0;
}

std::optional<std::string> ReadFileBytes(const std::string& path) {
  HANDLE h = CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                         FILE_ATTRIBUTE_NORMAL, nullptr);
  if (h == INVALID_HANDLE_VALUE) return std::nullopt;
  std::string bytes;
  char buf[65536];
  for (;;) {
    DWORD n = 0;
    if (!ReadFile(h, buf, sizeof buf, &n, nullptr)) {
      CloseHandle(h);
      return std::nullopt;
    }
    if (n == 0) break;
    bytes.append(buf, n);
  }
  CloseHandle(h);
  return bytes;
}

bool ReplaceFileAtomically(const std::string& path, std::string_view bytes) {
  std::string temp = path + ".new";
  HANDLE h = CreateFileA(temp.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                         FILE_ATTRIBUTE_NORMAL, nullptr);
  if (h == INVALID_HANDLE_VALUE) return false;
  bool ok = WriteAll(h, bytes) && FlushFileBuffers(h);
  ok = CloseHandle(h) && ok;
  if (ok &&
      MoveFileExA(temp.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
    return true;
  }
  DeleteFileA(temp.c_str());
  return false;
}

bool RemoveFile(const std::string& path) {
  return DeleteFileA(path.c_str()) != 0;
}

}  // namespace brindle::ini
