#include "core/settings_files.h"

#include "core/settings_paths.h"

namespace brindle::ini {

bool MakeFolders(const std::string& path) {
  if (path.empty() || FolderExists(path)) return true;
  std::string parent = ParentFolder(path);
  // Stop at a root ("/", "C:") or at a parent equal to the path itself.
  if (!parent.empty() && parent != path && !MakeFolders(parent)) return false;
  return MakeFolder(path) || FolderExists(path);
}

}  // namespace brindle::ini
