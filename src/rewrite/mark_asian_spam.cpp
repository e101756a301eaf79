// Asian-subject filter of downloaded mails.
#include <algorithm>
#include <new>
#include <string_view>

#include "core/log.h"
#include "incoming_filters.h"

namespace brindle {

namespace {

constexpr std::string_view kSubject = "Subject: ";
constexpr std::string_view kMark = "[SPAM] ";

bool IsHighByte(char c) {
  return static_cast<unsigned char>(c) >= 128;
}

// Both comparisons are strict; the share is compared as the classic filter
// did, in floating point (count / length against percentage / 100).
bool LooksAsian(std::string_view subject, int16_t afPercentage, int16_t afMin) {
  const auto count = std::count_if(subject.begin(), subject.end(), IsHighByte);
  const double share = static_cast<double>(count) / static_cast<double>(subject.size());
  return share > static_cast<double>(afPercentage) / 100.0 || count > afMin;
}

}  // namespace

std::string MarkAsianSpam(std::string&& text, int16_t afPercentage, int16_t afMin) {
  // The first "Subject: " anywhere in the text counts, header or not.
  const size_t subject = text.find(kSubject);
  if (subject == std::string::npos) return text;
  const size_t valueAt = subject + kSubject.size();
  const size_t lineEnd = text.find("\r\n", valueAt);
  if (lineEnd == std::string::npos) return text;  // no line end: not a subject line
  const std::string_view value(text.data() + valueAt, lineEnd - valueAt);
  if (value.empty() || !LooksAsian(value, afPercentage, afMin)) return text;
  try {
    // "Subject: " + "[SPAM] " + the old value: the mark goes after the blank
    // and brings its own, so a marked subject reads "[SPAM] Hello".
    text.insert(valueAt, kMark);
  } catch (const std::bad_alloc&) {
    log::Warning("Asian-subject filter: out of memory, subject left unmarked");
  }
  return text;
}

}  // namespace brindle
