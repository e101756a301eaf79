#include "web/web_text.h"

#include <iconv.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

namespace brindle::web {
namespace {

const char* CodePage() {
  const char* chosen = std::getenv("BRINDLE_CODEPAGE");
  return chosen && *chosen ? chosen : "WINDOWS-1250";
}

// iconv with every unconvertible character replaced by `stand_in`, so a
// stray byte never costs the rest of the text.
std::string Convert(std::string_view in, const char* to, const char* from, std::string_view standIn,
                    size_t inputStep) {
  iconv_t cd = iconv_open(to, from);
  if (cd == reinterpret_cast<iconv_t>(-1)) return std::string(in);
  std::string out;
  std::vector<char> buffer(4 * in.size() + 16);
  char* src = const_cast<char*>(in.data());
  size_t left = in.size();
  while (left > 0) {
    char* dst = buffer.data();
    size_t room = buffer.size();
    size_t r = iconv(cd, &src, &left, &dst, &room);
    out.append(buffer.data(), dst);
    if (r == static_cast<size_t>(-1) && left > 0) {
      out += standIn;
      // Skip the whole UTF-8 sequence, or the one byte that has no character.
      size_t skip = 1;
      if (inputStep > 1) {
        while (skip < left && (static_cast<unsigned char>(src[skip]) & 0xC0) == 0x80) ++skip;
      }
      src += skip;
      left -= skip;
    }
  }
  iconv_close(cd);
  return out;
}

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

std::string CodePageToUtf8(std::string_view bytes) {
  return Convert(bytes, "UTF-8", CodePage(), "\xEF\xBF\xBD", 1);
}

std::string Utf8ToCodePage(std::string_view utf8) {
  return Convert(utf8, CodePage(), "UTF-8", "?", 4);
}

std::string UrlDecode(std::string_view text) {
  std::string out;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '+') {
      out += ' ';
    } else if (text[i] == '%' && i + 2 < text.size() && HexValue(text[i + 1]) >= 0 &&
               HexValue(text[i + 2]) >= 0) {
      out += static_cast<char>(HexValue(text[i + 1]) * 16 + HexValue(text[i + 2]));
      i += 2;
    } else {
      out += text[i];
    }
  }
  return out;
}

std::map<std::string, std::string> ParseForm(std::string_view body) {
  std::map<std::string, std::string> fields;
  while (!body.empty()) {
    size_t end = body.find('&');
    std::string_view pair = body.substr(0, end);
    body = end == std::string_view::npos ? std::string_view{} : body.substr(end + 1);
    size_t eq = pair.find('=');
    if (eq == std::string_view::npos) {
      fields[UrlDecode(pair)] = "";
    } else {
      fields[UrlDecode(pair.substr(0, eq))] = UrlDecode(pair.substr(eq + 1));
    }
  }
  return fields;
}

std::string JsonString(std::string_view utf8) {
  std::string out = "\"";
  for (char c : utf8) {
    switch (c) {
      case '"':
        out += "\\\"";
        break;
      case '\\':
        out += "\\\\";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\t':
        out += "\\t";
        break;
      case '<':  // never "</script>" in a page, whatever the text holds
        out += "\\u003c";
        break;
      default:
        if (static_cast<unsigned char>(c) < 0x20) {
          char escaped[8];
          std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned char>(c));
          out += escaped;
        } else {
          out += c;
        }
    }
  }
  return out + "\"";
}

}  // namespace brindle::web
