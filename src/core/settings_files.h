// The few file operations the settings file needs, on byte-string paths in
// the system's code page (never converted).
#pragma once

#include <string>
#include <string_view>

#include "core/status.h"

namespace brindle::ini {

bool FileExists(const std::string& path);  // a file, not a folder
bool FolderExists(const std::string& path);

// Creates one folder; its parent must exist.
bool MakeFolder(const std::string& path);
// Creates the folder and each missing folder above it.
bool MakeFolders(const std::string& path);

Expected<std::string> ReadFileBytes(const std::string& path);

// Writes bytes to path + ".new" (made afresh, with the old file's access
// rights, never through a link), flushes it, then renames it over the old
// file and flushes that too, so that a crash leaves either the old file or
// the new one, never half.
Status ReplaceFileAtomically(const std::string& path, std::string_view bytes);

bool RemoveFile(const std::string& path);

}  // namespace brindle::ini
