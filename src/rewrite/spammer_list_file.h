// The spammer list file as the running program sees it: read when first
// asked for, read again whenever the file is written, replaced or deleted,
// and never fatal. A missing file is an empty list; a file that cannot be
// read keeps the list read last; a bad line is skipped. Each problem is
// logged once, not at every look.
#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "rewrite/data_files.h"
#include "rewrite/spammer_list.h"

namespace brindle {

class SpammerListFile {
 public:
  SpammerListFile() : list_(std::make_shared<const SpammerList>()) {}

  // Looks at the file at `path` (the setting may have changed since the
  // last look) and reads it again when it is not the file read last. True
  // when the list in force was replaced.
  bool Refresh(const std::string& path);

  std::shared_ptr<const SpammerList> Current() const { return list_; }

 private:
  std::string path_;
  bool looked_ = false;
  std::optional<datafile::FileStamp> stamp_;
  std::shared_ptr<const SpammerList> list_;
  std::set<std::string> reported_;
};

enum class AddSpammerResult { kAdded, kAlreadyListed, kNotAnEntry, kNotSaved };

// Adds one entry (an address, an @domain or a pattern) at the end of the
// list file, creating it when missing; the file is replaced atomically, so
// the running list takes the new entry at its next look. An address that
// the list already matches, or an entry already written, is not added again.
AddSpammerResult AddSpammer(const std::string& path, std::string_view entry);

}  // namespace brindle
