#include "oewin/attribution.h"

#include <array>
#include <initializer_list>

#include "core/text.h"
#include "oewin/quote_fix_text.h"

namespace brindle {
namespace {

// Around names, addresses and header fields, line ends count as blanks too.
constexpr std::string_view kBlanks = " \t\r\n";

bool IsOneOf(std::string_view key, std::initializer_list<std::string_view> names) {
  for (std::string_view n : names) {
    if (EqualsNoCase(key, n)) return true;
  }
  return false;
}

// "Jan Kowalski" or 'Jan Kowalski' loses its quotes; \" inside becomes ".
std::string Unquote(std::string_view s) {
  s = Trimmed(s, kBlanks);
  if (s.size() >= 2 && (s.front() == '"' || s.front() == '\'') && s.back() == s.front()) {
    s = s.substr(1, s.size() - 2);
  }
  std::string out;
  out.reserve(s.size());
  for (size_t i = 0; i < s.size(); ++i) {
    if (s[i] == '\\' && i + 1 < s.size()) ++i;
    out.push_back(s[i]);
  }
  return std::string(Trimmed(out, kBlanks));
}

// The first mailbox of a list: up to a "," or ";" outside quotes and brackets.
std::string_view FirstOfList(std::string_view value) {
  bool quoted = false;
  bool bracket = false;
  for (size_t i = 0; i < value.size(); ++i) {
    const char c = value[i];
    if (c == '"') quoted = !quoted;
    if (quoted) continue;
    if (c == '<') bracket = true;
    if (c == '>') bracket = false;
    if (!bracket && (c == ',' || c == ';')) return value.substr(0, i);
  }
  return value;
}

}  // namespace

Mailbox ParseMailbox(std::string_view value) {
  const std::string_view box = Trimmed(FirstOfList(Trimmed(value, kBlanks)), kBlanks);
  Mailbox out;
  const size_t lt = box.rfind('<');
  if (lt != std::string_view::npos) {
    const size_t gt = box.find('>', lt);
    const size_t end = gt == std::string_view::npos ? box.size() : gt;
    out.address = std::string(Trimmed(box.substr(lt + 1, end - lt - 1), kBlanks));
    out.name = Unquote(box.substr(0, lt));
    return out;
  }
  const size_t paren = box.find('(');
  if (paren != std::string_view::npos && box.find('@') < paren) {
    const size_t close = box.rfind(')');
    const size_t end = close == std::string_view::npos || close < paren ? box.size() : close;
    out.address = std::string(Trimmed(box.substr(0, paren), kBlanks));
    out.name = Unquote(box.substr(paren + 1, end - paren - 1));
    return out;
  }
  if (box.find('@') != std::string_view::npos) {
    out.address = Unquote(box);
  } else {
    out.name = Unquote(box);
  }
  return out;
}

SeparatorFields ReadSeparatorBlock(std::string_view block) {
  SeparatorFields f;
  for (std::string_view line : SplitCrLf(block)) {
    const size_t colon = line.find(':');
    if (colon == std::string_view::npos) continue;
    const std::string_view key = Trimmed(line.substr(0, colon), kBlanks);
    const std::string_view value = Trimmed(line.substr(colon + 1), kBlanks);
    std::string* target = nullptr;
    if (IsOneOf(key, {"From", "Od", "Von"})) {
      target = &f.from;
    } else if (IsOneOf(key, {"To", "Do", "An"})) {
      target = &f.to;
    } else if (IsOneOf(key, {"Sent", "Date", "Data", "Datum", "Gesendet"})) {
      target = &f.date;
    } else if (IsOneOf(key, {"Subject", "Temat", "Betreff"})) {
      target = &f.subject;
    } else if (IsOneOf(key, {"Message-ID", "MessageID"})) {
      target = &f.messageId;
    }
    if (target != nullptr && target->empty()) *target = std::string(value);
  }
  return f;
}

std::string BuildAttribution(std::string_view block, std::string_view templ) {
  const SeparatorFields f = ReadSeparatorBlock(block);
  Mailbox sender = ParseMailbox(f.from);
  Mailbox recipient = ParseMailbox(f.to);
  if (sender.name.empty()) sender.name = sender.address;
  if (recipient.name.empty()) recipient.name = recipient.address;

  struct Placeholder {
    std::string_view token;
    const std::string* value;
  };
  // Two-letter tokens first: the longer placeholder wins.
  const std::array<Placeholder, 9> placeholders{{
      {"nt", &recipient.name},
      {"et", &recipient.address},
      {"nf", &sender.name},
      {"ef", &sender.address},
      {"n", &sender.name},
      {"e", &sender.address},
      {"i", &f.messageId},
      {"d", &f.date},
      {"s", &f.subject},
  }};

  std::string out;
  out.reserve(templ.size() + 128);
  size_t i = 0;
  while (i < templ.size()) {
    const char c = templ[i];
    const Placeholder* match = nullptr;
    if (c == '%') {
      const std::string_view rest = templ.substr(i + 1);
      for (const Placeholder& p : placeholders) {
        if (rest.substr(0, p.token.size()) == p.token) {
          match = &p;
          break;
        }
      }
    }
    if (match == nullptr) {
      out.push_back(c);
      ++i;
      continue;
    }
    out.append(*match->value);
    i += 1 + match->token.size();
  }
  return out;
}

}  // namespace brindle
