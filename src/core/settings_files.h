// The few file operations the settings file needs, on byte-string paths in
// the system's code page (never converted).
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace brindle::ini {

bool FileExists(const std::string& path);  // a file, not a folder
bool FolderExists(const std::string& path);

// Creates one folder; its parent must exist.
bool MakeFolder(const std::string& path);
// Creates the folder and each missing folder above it.
bool MakeFolders(const std::string& path);

std::optional<std::string> ReadFileBytes(const std::string& path);

// Writes bytes beside path, then renames the new file over the old one, so
// that a crash leaves either the old file or the new one, never half.
bool ReplaceFileAtomically(const std::string& path, std::string_view bytes);

bool RemoveFile(const std::string& path);

}  // namespace brindle::ini
