// Reading the settings file, one line at a time: "//" comment lines at the
// head, "[Section]" headers, "Key=value" lines, and the raw lines that follow
// a "Lines=" or "SigLines=" count.
#include <atomic>
#include <cmath>
#include <exception>
#include <optional>
#include <string>

#include "core/language.h"
#include "core/log.h"
#include "core/settings_file.h"
#include "core/settings_keys.h"
#include "core/settings_number.h"
#include "core/text.h"

namespace brindle {
namespace {

using namespace ini;

enum class Section {
  kMisc,
  kSignature,
  kMailQuote,
  kNewsQuote,
  kNntp,
  kPop3,
  kSmtp,
  kFormatting,
  kBackgrounds,
  kCustomHeader,
  kCustomMailHeader,
};

struct SectionName {
  std::string_view name;
  Section section;
};

// Compared in this order; the misspelling of old versions stays accepted.
constexpr SectionName kSectionNames[] = {
    {"signature", Section::kSignature},       {"MailQuoteHeader", Section::kMailQuote},
    {"NewsQuoteHeader", Section::kNewsQuote}, {"NNTPServer", Section::kNntp},
    {"POP3Server", Section::kPop3},           {"SMTPServer", Section::kSmtp},
    {"Miscelanous", Section::kMisc},          {"Miscellaneous", Section::kMisc},
    {"Formatting", Section::kFormatting},     {"Backgrounds", Section::kBackgrounds},
    {"CustomHeader", Section::kCustomHeader}, {"CustomMailHeader", Section::kCustomMailHeader},
};

std::optional<Section> SectionFromName(std::string_view name) {
  for (const SectionName& n : kSectionNames) {
    if (EqualsNoCase(n.name, name)) return n.section;
  }
  return std::nullopt;
}

bool IsServer(Section s) {
  return s == Section::kNntp || s == Section::kPop3 || s == Section::kSmtp;
}

int32_t TypeOf(Section s) {
  return s == Section::kNntp ? kTypeNntp : s == Section::kPop3 ? kTypePop3 : kTypeSmtp;
}

int32_t DefaultPortAfter(Section s) {
  return s == Section::kNntp ? 119 : s == Section::kPop3 ? 110 : 25;
}

constexpr int kMaxWarnings = 50;

// A piece of the file quoted in a log entry, cut short.
std::string Quoted(std::string_view text) {
  constexpr size_t kMax = 40;
  std::string out(1, '"');
  out.append(text.substr(0, kMax));
  out.append(text.size() > kMax ? "...\"" : "\"");
  return out;
}

bool IsOne(std::string_view value) {
  return LeadingNumber(value) == 1;
}

class SettingsLoader {
 public:
  SettingsLoader(std::string_view bytes, Settings& s, const TunnelSink& sink,
                 const std::atomic<bool>* stop)
      : lines_(bytes), s_(s), sink_(sink), stop_(stop) {}
  bool Run();

 private:
  void OnLine(std::string_view line);
  void OnHeader(std::string_view line);
  void OnKey(std::string_view key, std::string_view value);
  void MiscKey(std::string_view key, std::string_view value);
  void ApplyMiscRule(const ini::MiscKey& k, std::string_view value);
  void QuoteKey(std::string_view key, std::string_view value, std::string& text, int16_t& flag);
  void SignatureKey(std::string_view key, std::string_view value);
  void ServerKey(std::string_view key, std::string_view value);
  void CustomKey(std::string_view key, std::string_view value, CustomHeader* h);
  void BackgroundKey(std::string_view key, std::string_view value);
  std::string ReadRawLines(std::string_view count);
  bool AdvanceIndex(int& index, int capacity, std::string_view what);
  void CompleteTunnel();
  void AddTunnel(const TunnelRecord& r);
  void SetInt16(int16_t& var, std::string_view key, std::string_view value);
  void SetPort(int32_t& port, std::string_view key, std::string_view value);
  void Warn(std::string_view what);

  LineReader lines_;
  Settings& s_;
  const TunnelSink& sink_;
  const std::atomic<bool>* stop_;
  Section section_ = Section::kMisc;
  bool sectionSkipped_ = false;  // a signature or custom header beyond its table
  bool pastHead_ = false;        // a line other than a comment has been read
  int lineNo_ = 0;
  int warnings_ = 0;
  int sigIndex_ = -1;
  int newsIndex_ = -1;
  int mailIndex_ = -1;
  // The tunnel of the server section being read. Its TLS flag is never reset
  // between sections: a POP3 or SMTP section without "SSL" inherits the flag
  // of the section before it. Kept so, because users' files are read that way.
  TunnelRecord pending_;
};

bool SettingsLoader::Run() {
  s_.strIniComment.clear();
  while (!lines_.AtEnd()) {
    if (stop_ && stop_->load(std::memory_order_relaxed)) {
      log::Info("reading the settings file stopped at line " + std::to_string(lineNo_));
      return false;
    }
    OnLine(lines_.Next());
  }
  if (IsServer(section_)) CompleteTunnel();
  return true;
}

// A damaged or foreign file could otherwise flood the log with one entry
// per line.
void SettingsLoader::Warn(std::string_view what) {
  ++warnings_;
  if (warnings_ > kMaxWarnings) return;
  std::string entry = "settings file, line " + std::to_string(lineNo_) + ": " + std::string(what);
  if (warnings_ == kMaxWarnings) entry += " (further problems in this file are not logged)";
  log::Warning(entry);
}

void SettingsLoader::OnLine(std::string_view line) {
  ++lineNo_;
  if (line.starts_with("//")) {
    // Comments are kept only at the head of the file; later ones are lost
    // at the next save.
    if (!pastHead_) s_.strIniComment.append(line).append("\r\n");
    return;
  }
  pastHead_ = true;
  if (line.starts_with("[")) return OnHeader(line);
  size_t eq = line.find('=');
  if (eq == std::string_view::npos) {
    if (!line.empty()) Warn("line without \"=\" ignored");
    return;
  }
  std::string_view key = line.substr(0, eq);
  std::string_view value = line.substr(eq + 1);
  if (!sectionSkipped_) return OnKey(key, value);
  // A skipped signature's text lines are still its own, not settings lines.
  if (section_ == Section::kSignature && EqualsNoCase(key, "SigLines")) ReadRawLines(value);
}

void SettingsLoader::OnHeader(std::string_view line) {
  if (IsServer(section_)) CompleteTunnel();
  if (!line.ends_with("]")) Warn("section header without closing bracket");
  // The name lies between the first and the last character of the line.
  std::string_view name = line.size() >= 2 ? line.substr(1, line.size() - 2) : std::string_view{};
  std::optional<Section> next = SectionFromName(name);
  if (!next) {
    Warn("unknown section " + Quoted(name) + ", previous section continues");
    return;
  }
  section_ = *next;
  sectionSkipped_ = false;
  if (section_ == Section::kSignature) {
    sectionSkipped_ = !AdvanceIndex(sigIndex_, kSignatureCount, "signatures");
  } else if (section_ == Section::kCustomHeader) {
    sectionSkipped_ = !AdvanceIndex(newsIndex_, kCustomHeaderCount, "news custom headers");
  } else if (section_ == Section::kCustomMailHeader) {
    sectionSkipped_ = !AdvanceIndex(mailIndex_, kCustomHeaderCount, "mail custom headers");
  }
}

bool SettingsLoader::AdvanceIndex(int& index, int capacity, std::string_view what) {
  if (index < capacity) ++index;
  if (index < capacity) return true;
  Warn("more than " + std::to_string(capacity) + " " + std::string(what) + ", section skipped");
  return false;
}

void SettingsLoader::OnKey(std::string_view key, std::string_view value) {
  switch (section_) {
    case Section::kMisc:
      return MiscKey(key, value);
    case Section::kNewsQuote:
      return QuoteKey(key, value, s_.strWrotkaNews, s_.intWrotkaNews);
    case Section::kMailQuote:
      return QuoteKey(key, value, s_.strWrotkaMail, s_.intWrotkaMail);
    case Section::kSignature:
      return SignatureKey(key, value);
    case Section::kNntp:
    case Section::kPop3:
    case Section::kSmtp:
      return ServerKey(key, value);
    case Section::kCustomHeader:
      return CustomKey(key, value, &s_.newsHeaders[newsIndex_]);
    case Section::kCustomMailHeader:
      return CustomKey(key, value, &s_.mailHeaders[mailIndex_]);
    case Section::kBackgrounds:
      return BackgroundKey(key, value);
    case Section::kFormatting:
      if (EqualsNoCase(key, "Background")) s_.strTlo = value;
      return;
  }
}

void SettingsLoader::SetInt16(int16_t& var, std::string_view key, std::string_view value) {
  if (std::optional<int16_t> n = NumberAsInt16(value)) {
    var = *n;
  } else {
    Warn("value of " + Quoted(key) + " out of range, key skipped");
  }
}

// A port beyond 65535 would wrap around to some other port on the way to
// the socket; the tunnel keeps the port it had instead.
void SettingsLoader::SetPort(int32_t& port, std::string_view key, std::string_view value) {
  std::optional<int32_t> n = NumberAsInt32(value);
  if (n && *n >= 0 && *n <= 65535) {
    port = *n;
  } else {
    Warn("port " + Quoted(value) + " of " + Quoted(key) + " is not 0 to 65535, key skipped");
  }
}

void SettingsLoader::MiscKey(std::string_view key, std::string_view value) {
  if (const ini::MiscKey* k = FindMiscKey(key)) return ApplyMiscRule(*k, value);
  if (EqualsNoCase(key, "QuoteHeader")) {
    s_.strWrotkaNews = value;  // the single-line attribution of older files
  } else if (EqualsNoCase(key, "NNTPDefaultServer")) {
    // The one news server of older files, started at once. A port never
    // read in this file is the news port.
    TunnelRecord r = pending_;
    r.Server = value;
    if (r.SrcPort == 0) r.SrcPort = 119;
    if (r.DestPort == 0) r.DestPort = 119;
    r.AutoStart = true;
    r.SSL = false;
    r.StartTLS = false;
    r.tType = kTypeNntp;
    AddTunnel(r);
  }
}

void SettingsLoader::ApplyMiscRule(const ini::MiscKey& k, std::string_view value) {
  switch (k.rule) {
    case MiscRule::kText:
      s_.*k.text = value;
      return;
    case MiscRule::kNumber:
      return SetInt16(s_.*k.number, k.name, value);
    case MiscRule::kOneOrZero:
      s_.*k.number = IsOne(value) ? 1 : 0;
      return;
    case MiscRule::kFilterMode: {
      std::optional<int16_t> n = NumberAsInt16(value);
      if (n && *n >= 0 && *n <= 2) {
        s_.*k.number = *n;
      } else {
        Warn("CharFiltering accepts only 0, 1 and 2, key skipped");
      }
      return;
    }
    case MiscRule::kLanguage:
      // An unknown code leaves the language at its default.
      if (std::optional<int16_t> base = BaseFromTwoLetterCode(value)) s_.*k.number = *base;
      return;
  }
}

// The raw lines announced by a "Lines=" or "SigLines=" count, whatever they
// hold, joined by CR LF; a count past the end of the file stops there.
std::string SettingsLoader::ReadRawLines(std::string_view count) {
  double n = std::nearbyint(LeadingNumber(count));
  std::string text;
  for (double i = 0; i < n; ++i) {
    if (lines_.AtEnd()) {
      Warn("the file ends before the " + Quoted(count) + " lines announced");
      break;
    }
    ++lineNo_;
    text.append(lines_.Next()).append("\r\n");
  }
  if (text.size() >= 2) text.resize(text.size() - 2);
  return text;
}

void SettingsLoader::QuoteKey(std::string_view key, std::string_view value, std::string& text,
                              int16_t& flag) {
  if (EqualsNoCase(key, "Lines")) {
    text = ReadRawLines(value);
  } else if (EqualsNoCase(key, "ChangeQuoteHeader")) {
    flag = IsOne(value) ? 1 : 0;
  }
}

void SettingsLoader::SignatureKey(std::string_view key, std::string_view value) {
  SignatureRecord& sig = s_.signatures[sigIndex_];
  if (EqualsNoCase(key, "UserName")) {
    sig.UserName = value;
  } else if (EqualsNoCase(key, "e-mail")) {
    sig.email = value;
  } else if (EqualsNoCase(key, "Distance")) {
    if (std::optional<uint8_t> d = NumberAsByte(value)) {
      sig.Distance = *d;
    } else {
      Warn("value of \"Distance\" out of range, key skipped");
    }
  } else if (EqualsNoCase(key, "SigLines")) {
    sig.text = ReadRawLines(value);
  } else if (EqualsNoCase(key, "RandomSig")) {
    sig.RandomSig = IsOne(value);
  } else if (EqualsNoCase(key, "SigFile")) {
    sig.SigFile.emplace_back(value);
  }
}

void SettingsLoader::ServerKey(std::string_view key, std::string_view value) {
  if (EqualsNoCase(key, "ServerName")) {
    pending_.Server = value;
  } else if (EqualsNoCase(key, "SrcPort")) {
    SetPort(pending_.SrcPort, key, value);
  } else if (EqualsNoCase(key, "DestPort")) {
    SetPort(pending_.DestPort, key, value);
  } else if (EqualsNoCase(key, "AutoStart")) {
    pending_.AutoStart = IsOne(value);
  } else if (EqualsNoCase(key, "SSL") && section_ != Section::kNntp) {
    // News sections never read the key, though the file holds it.
    pending_.SSL = LeadingNumber(value) != 0;
  } else if (EqualsNoCase(key, "StartTLS")) {
    pending_.StartTLS = IsOne(value);  // this section only, unlike SSL
  }
}

void SettingsLoader::CustomKey(std::string_view key, std::string_view value, CustomHeader* h) {
  if (EqualsNoCase(key, "HeaderName")) {
    h->HeaderName = value;
  } else if (EqualsNoCase(key, "HeaderBody")) {
    h->HeaderBody = value;
  } else if (EqualsNoCase(key, "InsertAfter")) {
    h->InsertAfter = value;
  }
}

void SettingsLoader::BackgroundKey(std::string_view key, std::string_view value) {
  if (EqualsNoCase(key, "MessageColor")) {
    s_.strTlo = value;
  } else if (EqualsNoCase(key, "MessageImage")) {
    s_.strMsgBgPict = value;
  } else if (EqualsNoCase(key, "MsgListColor")) {
    s_.strTloListy = value;
  } else if (EqualsNoCase(key, "MsgListImage")) {
    s_.strListBgPict = value;
  }
}

void SettingsLoader::CompleteTunnel() {
  TunnelRecord r = pending_;
  r.tType = TypeOf(section_);
  // A news tunnel never gets TLS from the file: the flag carried over from a
  // mail section before it stays pending for the next mail section instead.
  if (section_ == Section::kNntp) r.SSL = false;
  AddTunnel(r);
  pending_.Server.clear();
  pending_.StartTLS = false;
  pending_.AutoStart = false;
  pending_.SrcPort = pending_.DestPort = DefaultPortAfter(section_);
}

void SettingsLoader::AddTunnel(const TunnelRecord& r) {
  // A junk header inside a server section completes a record that was never
  // filled in; it would be a tunnel to nowhere.
  if (r.Server.empty()) {
    Warn("server section without ServerName, no tunnel made");
    return;
  }
  s_.tunnels.push_back(r);
  if (!sink_) return;
  try {
    sink_(r, s_);
  } catch (const std::exception& e) {
    log::Error(std::string("creating the tunnel to \"") + r.Server + "\" failed: " + e.what());
  } catch (...) {
    log::Error("creating the tunnel to \"" + r.Server + "\" failed");
  }
}

}  // namespace

bool LoadSettings(std::string_view fileBytes, Settings& s, const TunnelSink& sink,
                  const std::atomic<bool>* stop) {
  return SettingsLoader(fileBytes, s, sink, stop).Run();
}

}  // namespace brindle
