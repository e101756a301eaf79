#include "rewrite/spammer_mark.h"

#include <algorithm>
#include <vector>

#include "rewrite/downloaded_headers.h"

namespace brindle {
namespace {

constexpr std::string_view kMark = "[SPAM]";

// Replace `length` bytes at `at` by `with`.
struct Edit {
  size_t at;
  size_t length;
  std::string with;
};

std::string Apply(const std::string& text, std::vector<Edit> edits) {
  std::stable_sort(edits.begin(), edits.end(),
                   [](const Edit& a, const Edit& b) { return a.at < b.at; });
  size_t grown = text.size();
  for (const Edit& e : edits) grown += e.with.size();
  std::string out;
  out.reserve(grown);
  size_t from = 0;
  for (const Edit& e : edits) {
    out.append(text, from, e.at - from);
    out += e.with;
    from = e.at + e.length;
  }
  out.append(text, from, std::string::npos);
  return out;
}

}  // namespace

std::string MarkListedSpammer(std::string&& text, std::string_view spammerAddress) {
  const auto from = FindHeaderField(text, "From");
  if (!from) return text;
  std::vector<Edit> edits;
  const size_t afterFrom = from->end + 2;

  const auto subject = FindHeaderField(text, "Subject");
  if (!subject) {
    edits.push_back({afterFrom, 0, "Subject: " + std::string(kMark) + "\r\n"});
  } else {
    size_t value = subject->valueStart;
    while (value < subject->end && (text[value] == ' ' || text[value] == '\t')) ++value;
    if (std::string_view(text).substr(value, subject->end - value).starts_with(kMark)) {
      // already marked, by the subject filter or by the sender's server
    } else if (value == subject->end) {
      edits.push_back({value, 0, " " + std::string(kMark)});
    } else {
      edits.push_back({value, 0, std::string(kMark) + " "});
    }
  }

  const std::string_view fromValue =
      std::string_view(text).substr(from->valueStart, from->end - from->valueStart);
  const std::string mailbox = MailboxOf(HeaderValue(text, "From"));
  if (!spammerAddress.empty() && !mailbox.empty()) {
    size_t at = fromValue.find("<" + mailbox + ">");
    at = at == std::string_view::npos ? fromValue.find(mailbox) : at + 1;
    if (at != std::string_view::npos) {
      edits.push_back({from->valueStart + at, mailbox.size(), std::string(spammerAddress)});
      edits.push_back(
          {afterFrom, 0, std::string(kOriginalFromField) + ":" + std::string(fromValue) + "\r\n"});
    }
  }
  if (edits.empty()) return text;
  return Apply(text, std::move(edits));
}

}  // namespace brindle
