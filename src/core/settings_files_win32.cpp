#include <windows.h>

#include <vector>

#include "core/settings_files.h"

namespace brindle::ini {
namespace {

DWORD Attributes(const std::string& path) {
  return GetFileAttributesA(path.c_str());
}

std::error_code LastError() {
  return {static_cast<int>(GetLastError()), std::system_category()};
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

Expected<std::string> ReadFileBytes(const std::string& path) {
  HANDLE h = CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                         FILE_ATTRIBUTE_NORMAL, nullptr);
  if (h == INVALID_HANDLE_VALUE) return Status::Error("cannot open \"" + path + "\"", LastError());
  std::string bytes;
  char buf[65536];
  for (;;) {
    DWORD n = 0;
    if (!ReadFile(h, buf, sizeof buf, &n, nullptr)) {
      Status failed = Status::Error("cannot read \"" + path + "\"", LastError());
      CloseHandle(h);
      return failed;
    }
    if (n == 0) break;
    bytes.append(buf, n);
  }
  CloseHandle(h);
  return bytes;
}

Status ReplaceFileAtomically(const std::string& path, std::string_view bytes) {
  const std::string temp = path + ".new";
  // The settings are never readable by more people than the old file was:
  // the new one is made with its access list.
  std::vector<char> security;
  DWORD need = 0;
  GetFileSecurityA(path.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &need);
  if (need > 0) {
    security.resize(need);
    if (!GetFileSecurityA(path.c_str(), DACL_SECURITY_INFORMATION, security.data(), need, &need))
      security.clear();
  }
  SECURITY_ATTRIBUTES attributes{sizeof attributes, security.empty() ? nullptr : security.data(),
                                 FALSE};
  // What lies at the temporary name is a save killed half-way, or something
  // planted there: it goes, and the new file is made only where nothing is.
  DeleteFileA(temp.c_str());
  HANDLE h = CreateFileA(temp.c_str(), GENERIC_WRITE, 0, &attributes, CREATE_NEW,
                         FILE_ATTRIBUTE_NORMAL, nullptr);
  if (h == INVALID_HANDLE_VALUE)
    return Status::Error("cannot create \"" + temp + "\"", LastError());
  bool ok = WriteAll(h, bytes) && FlushFileBuffers(h);
  std::error_code error = ok ? std::error_code() : LastError();
  if (!CloseHandle(h) && ok) {
    ok = false;
    error = LastError();
  }
  // Write-through: the rename is on the disk before the call returns.
  if (ok && !MoveFileExA(temp.c_str(), path.c_str(),
                         MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
    ok = false;
    error = LastError();
  }
  if (ok) return Status::Ok();
  DeleteFileA(temp.c_str());
  return Status::Error("cannot write \"" + path + "\"", error);
}

bool RemoveFile(const std::string& path) {
  return DeleteFileA(path.c_str()) != 0;
}

}  // namespace brindle::ini
