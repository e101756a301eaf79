// The user's list of spammers: one entry per line, matched against the
// mailbox of a downloaded message's From field without regard to ASCII case.
//   joe@example.com    that mailbox exactly
//   @example.com       every mailbox of that domain (not of its subdomains)
//   sale?*@*.example   a pattern: "*" any run of bytes, "?" any one byte
// Blank lines and lines starting with "#" are skipped. A list is immutable
// once parsed: a changed file is parsed into a new list that replaces the
// old one whole.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace brindle {

struct SpammerListProblem {
  size_t line = 0;  // 1-based
  std::string text;
  std::string reason;
};

class SpammerList {
 public:
  // Bad lines are skipped and, when `problems` is given, reported there.
  static SpammerList Parse(std::string_view bytes,
                           std::vector<SpammerListProblem>* problems = nullptr);
  // Why `entry` cannot be a line of the list, or nothing when it can.
  static std::optional<std::string> EntryProblem(std::string_view entry);

  bool Matches(std::string_view mailbox) const;
  size_t Size() const { return addresses_.size() + domains_.size() + patterns_.size(); }
  bool Empty() const { return Size() == 0; }

 private:
  void AddPattern(std::string pattern);
  bool AnyPatternMatches(const std::vector<uint32_t>& candidates, std::string_view mailbox) const;

  std::unordered_set<std::string> addresses_;
  std::unordered_set<std::string> domains_;
  // Patterns are found through their literal end (or, lacking one, their
  // literal start) so that a mailbox is tried only against the few patterns
  // that could match it, however long the list.
  std::vector<std::string> patterns_;
  std::unordered_map<uint64_t, std::vector<uint32_t>> bySuffix_;
  std::unordered_map<uint64_t, std::vector<uint32_t>> byPrefix_;
  std::vector<uint32_t> unanchored_;
  std::vector<bool> suffixLengths_;
  std::vector<bool> prefixLengths_;
};

}  // namespace brindle
