#include "rewrite/outgoing_headers.h"

#include <string_view>

#include "core/log.h"
#include "core/text.h"
#include "rewrite/header_search.h"

namespace brindle {
namespace {

enum class Match { kExact, kAnyCase };

// Replaces the value of the first `header` ("Name: ") in the text by `value`,
// keeping the line end. The search is not anchored at a line start: the
// first occurrence anywhere counts, as users' setups have always had it.
// Without the header, or without a line end after it, the text goes out as it
// came: splicing anyway would overwrite the start of a message from a client
// that writes no such header.
std::string ReplaceHeaderValue(std::string&& text, std::string_view header, std::string_view value,
                               Match match, std::string_view step) {
  size_t found = match == Match::kExact ? text.find(header) : FindNoCase(text, header);
  if (found == std::string::npos) {
    log::Debug(std::string(step) + ": no \"" + std::string(header) +
               "\" header, message left unchanged");
    return text;
  }
  size_t valueStart = found + header.size();
  size_t lineEnd = text.find(kCrLf, valueStart - 1);
  if (lineEnd == std::string::npos) {
    log::Warning(std::string(step) + ": \"" + std::string(header) +
                 "\" has no line end, message left unchanged");
    return text;
  }
  text.replace(valueStart, lineEnd - valueStart, value);
  return text;
}

// Where the line for one custom header goes: right after the line that holds
// the first "InsertAfter: " (after the first line when there is none), or at
// the end of the header block when the entry names no anchor.
size_t CustomHeaderPosition(const SplicedText& text, const CustomHeader& entry) {
  size_t lineEnd;
  if (!entry.InsertAfter.empty()) {
    size_t anchor = text.Find(entry.InsertAfter + ": ");
    size_t from = anchor == std::string::npos ? 0 : anchor + 1;
    lineEnd = text.Find(kCrLf, from);
  } else {
    lineEnd = text.Find("\r\n\r\n");
  }
  return lineEnd == std::string::npos ? lineEnd : lineEnd + kCrLf.size();
}

std::string InsertCustomHeaders(std::string&& text,
                                const std::array<CustomHeader, kCustomHeaderCount>& table,
                                std::string_view step) {
  SplicedText spliced(text);
  bool changed = false;
  for (const CustomHeader& entry : table) {
    if (entry.HeaderName.empty()) continue;
    size_t pos = CustomHeaderPosition(spliced, entry);
    if (pos == std::string::npos) {
      log::Warning(std::string(step) + ": no line end to put \"" + entry.HeaderName +
                   "\" after, header left out");
      continue;
    }
    spliced.Insert(pos, entry.HeaderName + ": " + entry.HeaderBody + "\r\n");
    changed = true;
  }
  if (!changed) return text;
  return std::move(spliced).Join();
}

}  // namespace

std::string ChangeNewsHeaders(std::string&& text, const Settings& settings) {
  if (settings.intXNewsreader == 1) {
    text = ReplaceHeaderValue(std::move(text), "X-Newsreader: ", settings.strXNewsreader,
                              Match::kExact, "news headers");
  }
  if (settings.intXMimeOLE == 1) {
    text = ReplaceHeaderValue(std::move(text), "X-MimeOLE: ", settings.strXMimeOLE, Match::kAnyCase,
                              "news headers");
  }
  return text;
}

std::string ChangeMailHeaders(std::string&& text, const Settings& settings) {
  // The mail X-Mailer follows the news switch; intXMailer only records the
  // mail page's check box. Users' configurations rely on this pairing.
  if (settings.intXNewsreader == 1) {
    text = ReplaceHeaderValue(std::move(text), "X-Mailer: ", settings.strXMailer, Match::kExact,
                              "mail headers");
  }
  if (settings.intXMimeOLEMail == 1) {
    text = ReplaceHeaderValue(std::move(text), "X-MimeOLE: ", settings.strXMimeOLEMail,
                              Match::kAnyCase, "mail headers");
  }
  return text;
}

std::string InsertNewsCustomHeaders(std::string&& text, const Settings& settings) {
  return InsertCustomHeaders(std::move(text), settings.newsHeaders, "news custom headers");
}

std::string InsertMailCustomHeaders(std::string&& text, const Settings& settings) {
  return InsertCustomHeaders(std::move(text), settings.mailHeaders, "mail custom headers");
}

}  // namespace brindle
