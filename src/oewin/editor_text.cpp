#include "oewin/editor_text.h"

#include "oewin/quote_fix.h"

namespace brindle {

std::string NormaliseLineEnds(std::string_view text) {
  std::string out;
  out.reserve(text.size() + text.size() / 32);
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '\r') {
      size_t end = i;
      while (end < text.size() && text[end] == '\r') ++end;
      if (end < text.size() && text[end] == '\n') i = end;  // "\r\r\n": one line end
      out += "\r\n";
    } else if (c == '\n') {
      out += "\r\n";
    } else {
      out += c;
    }
  }
  return out;
}

std::string PlainTextToHtml(std::string_view text) {
  const std::string lines = NormaliseLineEnds(text);
  const std::string marker = std::string("<SPAN id=") + std::string(kCursorElementId) + "></SPAN>";
  std::string out;
  out.reserve(lines.size() + lines.size() / 8);
  // HTML folds runs of spaces, and drops one at a line's start; quote
  // prefixes and indents need them: every other space of a run is a &nbsp;.
  bool plainSpaceBefore = true;
  for (size_t i = 0; i < lines.size(); ++i) {
    if (lines.compare(i, kCursorMarker.size(), kCursorMarker) == 0) {
      out += marker;
      i += kCursorMarker.size() - 1;
      plainSpaceBefore = false;
      continue;
    }
    const char c = lines[i];
    bool plainSpace = false;
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      case '\r':
        out += "<BR>";
        ++i;
        break;  // always followed by '\n' here
      case ' ':
        // A space before a line end would be dropped too ("-- " ends a signature separator).
        plainSpace = !plainSpaceBefore && i + 1 < lines.size() && lines[i + 1] != '\r';
        out += plainSpace ? " " : "&nbsp;";
        break;
      default:
        out += c;
    }
    plainSpaceBefore = plainSpace || c == '\r';
  }
  return out;
}

}  // namespace brindle
