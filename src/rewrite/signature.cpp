#include "rewrite/signature.h"

#include <algorithm>
#include <optional>

#include "core/log.h"
#include "core/text.h"
#include "rewrite/signature_files.h"

namespace brindle {
namespace {

// The value after "From:" and the one blank the client always writes, or
// nothing when the text has no "From:" with a line end after its value.
std::optional<std::string> FindSender(std::string_view text) {
  size_t from = text.find("From:");
  if (from == std::string_view::npos) return std::nullopt;
  size_t lineEnd = text.find("\r\n", from);
  size_t valueStart = from + 6;
  if (lineEnd == std::string_view::npos || lineEnd < valueStart) return std::nullopt;
  return std::string(text.substr(valueStart, lineEnd - valueStart));
}

// The first record, in table order, whose address in angle brackets occurs in
// the sender. Display names play no part.
const SignatureRecord* FindRecord(const Settings& settings, std::string_view sender) {
  for (const SignatureRecord& record : settings.signatures) {
    if (record.email.empty()) continue;
    if (sender.find("<" + record.email + ">") != std::string_view::npos) return &record;
  }
  return nullptr;
}

// Places gap, delimiter and signature before the final dot line. One empty
// line at the end of the body is taken away first, so that the gap alone
// decides the spacing for the usual client text.
void PlaceSignature(std::string& text, std::string_view signature, int distance) {
  const size_t n = text.size();
  bool bodyEndsEmpty = n >= 7 && text.compare(n - 7, 4, "\r\n\r\n") == 0;
  text.resize(n - (bodyEndsEmpty ? 5 : 3));
  text.reserve(text.size() + 2 * distance + 5 + signature.size() + kTerminator.size());
  for (int i = 0; i < distance; ++i) text += "\r\n";
  text += "-- \r\n";
  text.append(signature);
  text.append(kTerminator);
}

}  // namespace

int RandomIndex(int n, RandomSource& random) {
  if (n <= 0) return 0;
  double draw = random.Next() * (static_cast<double>(n) + 1.0);
  // A source outside [0, 1) must not pick outside the list.
  return std::clamp(static_cast<int>(draw), 0, n);
}

std::string GetSender(std::string_view text) {
  return FindSender(text).value_or(std::string());
}

void ConvertSignatureISO(std::string& signature) {
  // windows-1250 bytes of a-ogonek, s-acute, z-acute and their capitals, with
  // the ISO-8859-2 codes of the same letters. No replacement yields a byte
  // that another one replaces, so one pass equals six in a row.
  for (char& c : signature) {
    switch (static_cast<unsigned char>(c)) {
      case 0xB9:
        c = static_cast<char>(177);
        break;
      case 0x9C:
        c = static_cast<char>(182);
        break;
      case 0x9F:
        c = static_cast<char>(188);
        break;
      case 0xA5:
        c = static_cast<char>(161);
        break;
      case 0x8C:
        c = static_cast<char>(166);
        break;
      case 0x8F:
        c = static_cast<char>(172);
        break;
      default:
        break;
    }
  }
}

std::string AppendSignature(std::string&& text, const Settings& settings, RandomSource& random) {
  std::optional<std::string> sender = FindSender(text);
  if (!sender) {
    log::Debug("signature: no From header, article left without signature");
    return text;
  }
  const SignatureRecord* record = FindRecord(settings, *sender);
  if (!record) return text;

  std::string signature = record->RandomSig ? RandomSignature(*record, random) : record->text;
  if (settings.intISO == 1) ConvertSignatureISO(signature);
  if (signature.empty()) {
    if (record->RandomSig) {
      log::Debug("signature: no signature file of <" + record->email +
                 "> gave text, article left without signature");
    }
    return text;
  }
  if (!std::string_view(text).ends_with(kTerminator)) {
    log::Warning("signature: article does not end with the dot line, left without signature");
    return text;
  }
  PlaceSignature(text, signature, record->Distance);
  return text;
}

}  // namespace brindle
