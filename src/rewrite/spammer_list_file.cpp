#include "rewrite/spammer_list_file.h"

#include <algorithm>
#include <vector>

#include "core/log.h"
#include "core/settings_files.h"
#include "core/text.h"

namespace brindle {

bool SpammerListFile::Refresh(const std::string& path) {
  const bool otherFile = !looked_ || path != path_;
  const auto stamp = datafile::Stamp(path);
  if (!otherFile && stamp == stamp_) return false;
  looked_ = true;
  path_ = path;
  if (!stamp) {  // no list (yet): nothing is marked
    stamp_.reset();
    const bool had = !list_->Empty();
    list_ = std::make_shared<const SpammerList>();
    if (had) log::Info("Spammer list " + path + " is gone: 0 entries");
    return had;
  }
  auto bytes = stamp->regular ? ini::ReadFileBytes(path)
                              : Expected<std::string>(Status::Error("not a file"));
  if (!bytes.ok()) {
    // Looked at again at every refresh, but said once.
    if (reported_.insert(path + "\n(unreadable)").second) {
      log::Warning("Spammer list " + path + " cannot be read (" + bytes.status().message() +
                   "); the list read last stays in force");
    }
    if (otherFile) list_ = std::make_shared<const SpammerList>();
    // A file that failed to read is tried again at the next look (an editor
    // may hold it a moment); a folder or a pipe in its place once it changes.
    stamp_ = stamp->regular ? std::nullopt : stamp;
    return otherFile;
  }
  reported_.erase(path + "\n(unreadable)");
  std::vector<SpammerListProblem> problems;
  list_ = std::make_shared<const SpammerList>(SpammerList::Parse(*bytes, &problems));
  stamp_ = stamp;
  for (const auto& p : problems) {
    if (!reported_.insert(path + "\n" + p.text).second) continue;
    log::Warning("Spammer list " + path + ", line " + std::to_string(p.line) + " skipped (" +
                 p.reason + "): " + p.text);
  }
  log::Info("Spammer list " + path + " read: " + std::to_string(list_->Size()) + " entries");
  return true;
}

AddSpammerResult AddSpammer(const std::string& path, std::string_view entry) {
  entry = Trimmed(entry, " \t\r");
  if (entry.empty() || SpammerList::EntryProblem(entry)) return AddSpammerResult::kNotAnEntry;
  std::string bytes;
  if (ini::FileExists(path)) {
    auto existing = ini::ReadFileBytes(path);
    if (!existing.ok()) return AddSpammerResult::kNotSaved;  // never overwrite what we cannot read
    bytes = std::move(*existing);
  }
  const SpammerList list = SpammerList::Parse(bytes);
  if (entry.find_first_of("*?") == std::string_view::npos && entry.front() != '@' &&
      list.Matches(entry)) {
    return AddSpammerResult::kAlreadyListed;
  }
  for (std::string_view rest = bytes; !rest.empty();) {
    const size_t end = rest.find('\n');
    if (EqualsNoCase(Trimmed(rest.substr(0, end), " \t\r"), entry))
      return AddSpammerResult::kAlreadyListed;
    rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
  }
  // New lines follow the file's own line ends.
  const std::string_view lineEnd =
      bytes.empty() || bytes.find("\r\n") != std::string::npos ? "\r\n" : "\n";
  if (!bytes.empty() && !bytes.ends_with('\n')) bytes += lineEnd;
  bytes += entry;
  bytes += lineEnd;
  if (!ini::ReplaceFileAtomically(path, bytes).ok()) return AddSpammerResult::kNotSaved;
  return AddSpammerResult::kAdded;
}

}  // namespace brindle
