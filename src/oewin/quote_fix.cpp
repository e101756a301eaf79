#include "oewin/quote_fix.h"

#include <cstdint>
#include <exception>

#include "core/log.h"
#include "oewin/attribution.h"
#include "oewin/quote_fix_steps.h"
#include "oewin/quote_fix_text.h"
#include "oewin/quote_prefix.h"
#include "oewin/rewrap.h"

namespace brindle {
namespace {

// Positions are 1-based with 0 for "not found", which keeps the arithmetic
// around the separator block (p + 2, q - p - 1, q + 3) as the client lays
// the block out.
using Pos = int64_t;

Pos Find(std::string_view text, std::string_view what, Pos start = 1) {
  if (start < 1 || start > static_cast<Pos>(text.size())) return 0;
  const size_t at = text.find(what, static_cast<size_t>(start - 1));
  return at == std::string_view::npos ? 0 : static_cast<Pos>(at) + 1;
}

// count characters from start; a negative count gives nothing.
std::string Mid(std::string_view text, Pos start, Pos count) {
  const Pos size = static_cast<Pos>(text.size());
  if (start < 1 || count <= 0 || start > size) return {};
  const Pos available = size - start + 1;
  return std::string(text.substr(static_cast<size_t>(start - 1),
                                 static_cast<size_t>(count < available ? count : available)));
}

std::string Rest(std::string_view text, Pos start) {
  return Mid(text, start, static_cast<Pos>(text.size()));
}

// The client's separator line: "----- Original Message -----" or the like.
Pos FindSeparator(std::string_view text) {
  Pos p = Find(text, "\r\n----- ");
  if (p == 0) p = Find(text, "\r\n----");
  if (p == 0) p = Find(text, "----- ");
  return p;
}

// Blank runs the client leaves around its quote: an empty quoted block
// between blank lines goes, and triple line ends shrink (two passes, so runs
// of up to four collapse, longer ones only shrink).
std::string CleanBlankRuns(std::string_view text) {
  std::string t = ReplaceAll(text, "\r\n> \r\n\r\n\r\n\r\n> \r\n", "");
  t = ReplaceAll(t, "\r\n\r\n\r\n", "\r\n\r\n");
  return ReplaceAll(t, "\r\n\r\n\r\n", "\r\n\r\n");
}

std::string AttributionTemplate(const Settings& s, MessageKind kind, bool& enabled) {
  if (kind == MessageKind::kNews) {
    enabled = s.intWrotkaNews != 0;
    return s.strWrotkaNews;
  }
  enabled = s.intWrotkaMail != 0;
  return s.strWrotkaMail;
}

std::string Assemble(const QuoteMessage& m, bool bottomPosting) {
  std::string out;
  out.reserve(m.QuoteHeader.size() + m.QuotedText.size() + m.TopText.size() + 32);
  if (bottomPosting) {
    out.append(m.QuoteHeader).append(kCrLf).append(m.QuotedText);
    out.append(kCrLf).append(kCrLf).append(kCursorMarker).append(kCrLf).append(m.TopText);
  } else {
    out.append(kCursorMarker).append(kCrLf).append(m.TopText).append(kCrLf).append(kCrLf);
    out.append(m.QuoteHeader).append(kCrLf).append(m.QuotedText);
  }
  return out;
}

std::string FixReply(QuoteMessage& m, std::string_view original, const QuoteFixOptions& o) {
  const Settings& s = o.settings;
  const Pos p = FindSeparator(original);
  const std::string text = CleanBlankRuns(original);
  const Pos len = static_cast<Pos>(text.size());

  // The separator block runs from the separator line to the first blank line.
  const Pos q = p == 0 ? 0 : Find(text, "\r\n\r\n", p);
  std::string header;
  Pos e = 0;  // last character of the block's closing blank line
  if (q == 0) {
    header = Mid(text, p + 2, len - p - 2);
    e = len;
  } else {
    header = Mid(text, p + 2, q - p - 1);
    e = q + 3;
  }
  // The block is cut through its closing line end and keeps that line's CR;
  // the assembly puts a whole CR LF after it, and a lone CR before it would
  // show in the editor as a stray line break.
  if (!header.empty() && header.back() == '\r') header.pop_back();
  bool attribution = false;
  const std::string templ = AttributionTemplate(s, m.Kind(), attribution);
  if (attribution) header = BuildAttribution(header, templ);

  std::string quoted = Rest(text, e + 1);
  quoted = ReplaceAll(quoted, "> \r\n\r\n>", "> \r\n> \r\n>");
  if (e - 2 >= 0) {
    const size_t from = e - 2 >= 1 ? static_cast<size_t>(e - 3) : 0;
    if (!IsAlreadyQuoted(text, from)) quoted = "> " + ReplaceAll(quoted, kCrLf, "\r\n> ");
  }
  quoted = NormaliseQuotePrefixes(quoted, s.intHorizontalQCompression != 0);
  std::string top = p >= 1 ? Mid(text, 1, p - 1) : std::string();

  if (!o.ctrlHeld) quoted = RemoveQuotedSignature(quoted);
  quoted = DropQuotedBlanksBeforeEmptyLines(quoted);
  quoted = Rewrap(quoted, s.intWrap);
  if (s.intVerticalQCompression == 1) quoted = CompressVertically(quoted);

  // A marker already in the pieces would take the caret to the wrong place.
  m.QuoteHeader = RemoveAllRepeatedly(header, kCursorMarker);
  m.QuotedText = RemoveAllRepeatedly(quoted, kCursorMarker);
  m.TopText = RemoveAllRepeatedly(top, kCursorMarker);
  return Assemble(m, s.intBottomPosting == 1);
}

}  // namespace

bool IsReplyOrForward(std::string_view subject) {
  return StartsWithNoCase(subject, "RE:") || StartsWithNoCase(subject, "FW:");
}

std::string QuoteFix(QuoteMessage& message, std::string_view text, const QuoteFixOptions& options) {
  try {
    const std::string subject = message.Subject();
    if (!IsReplyOrForward(subject)) {
      if (!subject.empty() || text.empty()) return std::string(text);
      return std::string(kCrLf) + std::string(text);
    }
    return FixReply(message, text, options);
  } catch (const std::exception& ex) {
    // Out of memory on a huge text: the window keeps the client's text.
    log::Warning(std::string("QuoteFix left the reply as it was: ") + ex.what());
    return {};
  }
}

}  // namespace brindle
