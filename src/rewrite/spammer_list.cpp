#include "rewrite/spammer_list.h"

#include <algorithm>

#include "core/text.h"

namespace brindle {
namespace {

constexpr size_t kLongestEntry = 320;  // a mailbox is at most 254 bytes
constexpr std::string_view kUtf8Bom = "\xEF\xBB\xBF";

std::string Lowered(std::string_view s) {
  std::string out(s);
  std::transform(out.begin(), out.end(), out.begin(), AsciiLower);
  return out;
}

bool IsWildcard(char c) {
  return c == '*' || c == '?';
}

// FNV-1a, fed one byte at a time so that the hashes of all suffixes (fed
// backwards) or all prefixes of a mailbox come in one pass.
constexpr uint64_t kFnvStart = 14695981039346656037ull;
uint64_t Feed(uint64_t hash, char c) {
  return (hash ^ static_cast<unsigned char>(c)) * 1099511628211ull;
}

uint64_t ForwardHash(std::string_view s) {
  uint64_t h = kFnvStart;
  for (char c : s) h = Feed(h, c);
  return h;
}

uint64_t BackwardHash(std::string_view s) {
  uint64_t h = kFnvStart;
  for (auto it = s.rbegin(); it != s.rend(); ++it) h = Feed(h, *it);
  return h;
}

// "*" any run of bytes, "?" any one byte; both sides already lower case.
// Backtracks only to the latest "*", so it runs in O(pattern x text) at worst.
bool Glob(std::string_view pattern, std::string_view text) {
  size_t p = 0, t = 0, star = std::string_view::npos, resume = 0;
  while (t < text.size()) {
    if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == text[t])) {
      ++p;
      ++t;
    } else if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      resume = t;
    } else if (star != std::string_view::npos) {
      p = star + 1;
      t = ++resume;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == '*') ++p;
  return p == pattern.size();
}

void Mark(std::vector<bool>& lengths, size_t length) {
  if (lengths.size() <= length) lengths.resize(length + 1);
  lengths[length] = true;
}

}  // namespace

std::optional<std::string> SpammerList::EntryProblem(std::string_view entry) {
  if (entry.size() > kLongestEntry) return "longer than any address";
  for (char c : entry) {
    const auto u = static_cast<unsigned char>(c);
    if (u <= ' ' || u == 0x7F) return "holds blanks or control characters";
  }
  const size_t at = entry.find('@');
  const bool pattern = std::any_of(entry.begin(), entry.end(), IsWildcard);
  if (pattern) {
    const bool literal =
        std::any_of(entry.begin(), entry.end(), [](char c) { return !IsWildcard(c) && c != '@'; });
    if (!literal) return "a pattern that every sender matches";
    return std::nullopt;
  }
  if (at == std::string_view::npos) return "neither an address, an @domain nor a pattern";
  if (entry.find('@', at + 1) != std::string_view::npos) return "more than one @";
  if (at + 1 == entry.size()) return "nothing after the @";
  return std::nullopt;
}

SpammerList SpammerList::Parse(std::string_view bytes, std::vector<SpammerListProblem>* problems) {
  SpammerList list;
  if (bytes.starts_with(kUtf8Bom)) bytes.remove_prefix(kUtf8Bom.size());
  size_t number = 0;
  while (!bytes.empty()) {
    ++number;
    const size_t lineEnd = bytes.find('\n');
    const std::string_view line = Trimmed(bytes.substr(0, lineEnd), " \t\r");
    bytes = lineEnd == std::string_view::npos ? std::string_view() : bytes.substr(lineEnd + 1);
    if (line.empty() || line.front() == '#') continue;
    if (auto why = EntryProblem(line)) {
      if (problems) problems->push_back({number, std::string(line), std::move(*why)});
      continue;
    }
    std::string entry = Lowered(line);
    if (std::any_of(entry.begin(), entry.end(), IsWildcard)) {
      list.AddPattern(std::move(entry));
    } else if (entry.front() == '@') {
      list.domains_.insert(entry.substr(1));
    } else {
      list.addresses_.insert(std::move(entry));
    }
  }
  return list;
}

void SpammerList::AddPattern(std::string pattern) {
  const auto index = static_cast<uint32_t>(patterns_.size());
  const size_t first = pattern.find_first_of("*?");
  const size_t last = pattern.find_last_of("*?");
  const std::string_view view(pattern);
  if (last + 1 < pattern.size()) {
    const std::string_view suffix = view.substr(last + 1);
    bySuffix_[BackwardHash(suffix)].push_back(index);
    Mark(suffixLengths_, suffix.size());
  } else if (first > 0) {
    const std::string_view prefix = view.substr(0, first);
    byPrefix_[ForwardHash(prefix)].push_back(index);
    Mark(prefixLengths_, prefix.size());
  } else {
    unanchored_.push_back(index);
  }
  patterns_.push_back(std::move(pattern));
}

bool SpammerList::AnyPatternMatches(const std::vector<uint32_t>& candidates,
                                    std::string_view mailbox) const {
  return std::any_of(candidates.begin(), candidates.end(),
                     [&](uint32_t i) { return Glob(patterns_[i], mailbox); });
}

bool SpammerList::Matches(std::string_view mailbox) const {
  if (mailbox.empty() || Empty()) return false;
  const std::string lowered = Lowered(mailbox);
  if (addresses_.count(lowered)) return true;
  const size_t at = lowered.rfind('@');
  if (at != std::string::npos && !domains_.empty() && domains_.count(lowered.substr(at + 1)))
    return true;
  if (patterns_.empty()) return false;
  // Every suffix and prefix of the mailbox whose length some pattern's
  // literal end or start has; a hash hit is confirmed by the full match.
  uint64_t h = kFnvStart;
  for (size_t n = 1; n <= lowered.size() && n < suffixLengths_.size(); ++n) {
    h = Feed(h, lowered[lowered.size() - n]);
    if (!suffixLengths_[n]) continue;
    const auto hit = bySuffix_.find(h);
    if (hit != bySuffix_.end() && AnyPatternMatches(hit->second, lowered)) return true;
  }
  h = kFnvStart;
  for (size_t n = 1; n <= lowered.size() && n < prefixLengths_.size(); ++n) {
    h = Feed(h, lowered[n - 1]);
    if (!prefixLengths_[n]) continue;
    const auto hit = byPrefix_.find(h);
    if (hit != byPrefix_.end() && AnyPatternMatches(hit->second, lowered)) return true;
  }
  return AnyPatternMatches(unanchored_, lowered);
}

}  // namespace brindle
