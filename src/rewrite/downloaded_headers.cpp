#include "rewrite/downloaded_headers.h"

#include "core/text.h"

namespace brindle {
namespace {

bool IsBlank(char c) {
  return c == ' ' || c == '\t';
}

}  // namespace

std::optional<HeaderField> FindHeaderField(std::string_view text, std::string_view name) {
  size_t line = text.find(kCrLf);  // the status line is not a header
  if (line == std::string_view::npos) return std::nullopt;
  line += kCrLf.size();
  std::optional<HeaderField> found;
  while (line < text.size()) {
    const size_t lineEnd = text.find(kCrLf, line);
    if (lineEnd == std::string_view::npos || lineEnd == line) break;  // end of the header block
    const std::string_view content = text.substr(line, lineEnd - line);
    if (found) {
      if (!IsBlank(content.front())) return found;
      found->end = lineEnd;  // a continuation line of the field
    } else if (content.size() > name.size() && content[name.size()] == ':' &&
               StartsWithNoCase(content, name)) {
      found = HeaderField{line, line + name.size() + 1, lineEnd};
    }
    line = lineEnd + kCrLf.size();
  }
  return found;
}

std::string HeaderValue(std::string_view text, std::string_view name) {
  const auto field = FindHeaderField(text, name);
  if (!field) return {};
  std::string value;
  std::string_view rest = text.substr(field->valueStart, field->end - field->valueStart);
  for (;;) {
    const size_t lineEnd = rest.find(kCrLf);
    const std::string_view part = Trimmed(rest.substr(0, lineEnd));
    if (!part.empty()) {
      if (!value.empty()) value += ' ';
      value += part;
    }
    if (lineEnd == std::string_view::npos) break;
    rest.remove_prefix(lineEnd + kCrLf.size());
  }
  return value;
}

std::string MailboxOf(std::string_view value) {
  // One pass that skips quoted display names and comments, remembering the
  // last "<...>" and the first bare word with an "@".
  std::string_view bracketed, bare;
  size_t i = 0, wordStart = std::string_view::npos;
  auto endWord = [&](size_t at) {
    if (wordStart == std::string_view::npos) return;
    const std::string_view word = value.substr(wordStart, at - wordStart);
    if (bare.empty() && word.find('@') != std::string_view::npos) bare = word;
    wordStart = std::string_view::npos;
  };
  while (i < value.size()) {
    const char c = value[i];
    if (c == '"') {
      endWord(i);
      for (++i; i < value.size() && value[i] != '"'; ++i) {
        if (value[i] == '\\') ++i;
      }
      ++i;
    } else if (c == '(') {
      endWord(i);
      int depth = 0;
      for (; i < value.size(); ++i) {
        if (value[i] == '\\') {
          ++i;
        } else if (value[i] == '(') {
          ++depth;
        } else if (value[i] == ')' && --depth == 0) {
          break;
        }
      }
      ++i;
    } else if (c == '<') {
      endWord(i);
      const size_t close = value.find('>', i);
      if (close == std::string_view::npos) break;
      bracketed = value.substr(i + 1, close - i - 1);
      i = close + 1;
    } else if (IsBlank(c) || c == ',') {
      endWord(i);
      ++i;
    } else {
      if (wordStart == std::string_view::npos) wordStart = i;
      ++i;
    }
  }
  endWord(std::min(i, value.size()));
  return std::string(Trimmed(bracketed.empty() ? bare : bracketed));
}

}  // namespace brindle
