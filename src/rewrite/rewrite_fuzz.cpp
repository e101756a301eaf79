// Runs every message step on arbitrary bytes: no crash, no hang, and the few
// properties each step promises about what it may change.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "core/log.h"
#include "core/settings.h"
#include "rewrite/incoming_filters.h"
#include "rewrite/outgoing_headers.h"
#include "rewrite/signature.h"

namespace brindle {
namespace {

constexpr size_t kSettingsBytes = 8;

void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "broken property: %s\n", what);
  std::abort();
}

// Same sequence for the same input, so every crash replays.
class CountingRandom : public RandomSource {
 public:
  explicit CountingRandom(uint8_t seed) : state_(seed) {}
  double Next() override {
    state_ = state_ * 6364136223846793005ULL + 1442695040888963407ULL;
    return static_cast<double>(state_ >> 11) / 9007199254740992.0;
  }

 private:
  uint64_t state_;
};

Settings MakeSettings(const uint8_t* b) {
  Settings s;
  s.intXNewsreader = b[0] & 1;
  s.intXMimeOLE = (b[0] >> 1) & 1;
  s.intXMimeOLEMail = (b[0] >> 2) & 1;
  s.strXNewsreader = "Brindle\r\n";
  s.strXMimeOLE = "";
  s.strXMailer = "Mailer 1.0";
  s.strXMimeOLEMail = "Produced By Nobody";
  s.intCharFiltering = b[1] % 3;
  s.intAFPercentage = static_cast<int8_t>(b[2]);
  s.intAFMin = static_cast<int8_t>(b[3]);
  s.intStripRef = static_cast<int16_t>(b[4] * 4 + (b[5] & 3));
  const char* anchors[] = {"", "Subject", "References", "X-None"};
  for (int i = 0; i < 4; ++i) {
    if (b[6] & (1 << i)) s.newsHeaders[i * 7] = {"X-Fuzz", anchors[i], "v"};
    if (b[6] & (16 << i)) s.mailHeaders[i * 5] = {"X-Fuzz", anchors[i], ""};
  }
  SignatureRecord& sig = s.signatures[b[7] % kSignatureCount];
  sig.UserName = "Fuzz";
  sig.email = "a@b";
  sig.text = "-- \r\nFuzz \xb1\xe6";
  sig.Distance = b[7] % 4;
  sig.RandomSig = (b[7] & 0x80) != 0;
  sig.SigFile = {"/nonexistent/brindle-fuzz/sig1.txt", "/nonexistent/brindle-fuzz/sig2.txt"};
  return s;
}

bool IsControl(unsigned char c) {
  return c < 9 || (c >= 14 && c < 32);
}

void CheckFilterChars(const std::string& in, int16_t mode) {
  const std::string out = FilterChars(std::string(in), mode);
  if (mode == 1) {
    Require(out.size() == in.size(), "FilterChars mode 1 keeps the length");
    for (size_t i = 0; i < in.size(); ++i) {
      const bool control = IsControl(static_cast<unsigned char>(in[i]));
      Require(out[i] == (control ? ' ' : in[i]), "FilterChars blanks exactly the control codes");
    }
    return;
  }
  std::string kept;
  std::copy_if(in.begin(), in.end(), std::back_inserter(kept),
               [](char c) { return !IsControl(static_cast<unsigned char>(c)); });
  Require(out == kept, "FilterChars deletes exactly the control codes");
}

// Besides the "\r\r" fix before "begin ", only a blank after "\r\nbegin" may
// become 160; and a second run finds nothing more to do.
void CheckFilterBegin(const std::string& in) {
  const std::string out = FilterBegin(std::string(in));
  Require(out.size() == in.size(), "FilterBegin keeps the length");
  const std::string_view view(out);
  for (size_t i = 0; i < in.size(); ++i) {
    if (in[i] == out[i]) continue;
    const bool crFix = in[i] == '\r' && out[i] == '\n' && i > 0 && in[i - 1] == '\r' &&
                       std::string_view(in).substr(i + 1, 6) == "begin ";
    const bool disarmed =
        in[i] == ' ' && out[i] == '\xa0' && i >= 7 && view.substr(i - 7, 7) == "\r\nbegin";
    Require(crFix || disarmed, "FilterBegin changes only line ends and blanks after begin");
  }
  Require(FilterBegin(std::string(out)) == out, "FilterBegin is idempotent");
}

void CheckMarkAsianSpam(const std::string& in, int16_t percentage, int16_t min) {
  const std::string out = MarkAsianSpam(std::string(in), percentage, min);
  if (out == in) return;
  const size_t at = in.find("Subject: ");
  Require(at != std::string::npos, "MarkAsianSpam needs a subject");
  Require(out == std::string(in).insert(at + 9, "[SPAM] "), "MarkAsianSpam only inserts the mark");
}

std::string Relabelled(std::string text) {
  for (size_t at = text.find("multipart/signed"); at != std::string::npos;
       at = text.find("multipart/signed", at)) {
    text.replace(at, 16, "multipart/mixed");
  }
  return text;
}

void CheckFixBoundary(const std::string& in) {
  const std::string out = FixBoundary(std::string(in));
  Require(out.size() <= in.size(), "FixBoundary never grows the text");
  Require(Relabelled(out) == Relabelled(in), "FixBoundary changes only multipart/signed");
}

void RunOutgoing(const std::string& text, const Settings& settings, uint8_t seed) {
  CountingRandom random(seed);
  std::string news = AppendSignature(std::string(text), settings, random);
  news = CutReferences(std::move(news), settings.intStripRef);
  news = ChangeNewsHeaders(std::move(news), settings);
  news = InsertNewsCustomHeaders(std::move(news), settings);
  std::string mail = ChangeMailHeaders(std::string(text), settings);
  mail = InsertMailCustomHeaders(std::move(mail), settings);
  std::string sig(text.substr(0, 64));
  ConvertSignatureISO(sig);
  Require(sig.size() == std::min<size_t>(text.size(), 64), "ConvertSignatureISO keeps the length");
  (void)GetSender(text);
}

}  // namespace
}  // namespace brindle

// Steps log the texts they leave alone; thousands of runs a second would
// drown the fuzzer's own output.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
  brindle::log::SetSink({});
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace brindle;
  if (size < kSettingsBytes) return 0;
  const Settings settings = MakeSettings(data);
  const std::string text(reinterpret_cast<const char*>(data) + kSettingsBytes,
                         size - kSettingsBytes);
  CheckFilterChars(text, settings.intCharFiltering);
  CheckFilterBegin(text);
  CheckMarkAsianSpam(text, settings.intAFPercentage, settings.intAFMin);
  CheckFixBoundary(text);
  RunOutgoing(text, settings, data[7]);
  return 0;
}
