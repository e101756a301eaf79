// Writing the settings file: every variable, in the fixed order of the file,
// each line ended by CR LF.
#include <array>
#include <exception>
#include <string>

#include "core/log.h"
#include "core/settings_file.h"
#include "core/settings_files.h"
#include "core/settings_keys.h"
#include "core/settings_paths.h"

namespace brindle {
namespace {

using namespace ini;

class FileText {
 public:
  void Line(std::string_view text) { out_.append(text).append("\r\n"); }
  // A line end inside a one-line value would start a line of its own in the
  // file (a stray key, even a section); the value is cut there instead.
  void Key(std::string_view key, std::string_view value) {
    if (size_t end = value.find_first_of("\r\n"); end != std::string_view::npos) {
      log::Warning("settings value of \"" + std::string(key) + "\" cut at its line end");
      value = value.substr(0, end);
    }
    out_.append(key).append("=").append(value).append("\r\n");
  }
  void Key(std::string_view key, long long value) { Key(key, std::to_string(value)); }
  // The print form of a number: a blank before and after the digits.
  void PrintKey(std::string_view key, bool value) { Key(key, value ? " 1 " : " 0 "); }
  void Raw(std::string_view text) { out_.append(text); }
  // The count must match the lines the text spans in the file, so any
  // other line end in it is written as CR LF.
  void MultiLine(std::string_view key, std::string_view text) {
    std::string lines = CrLfLineEnds(text);
    Key(key, CountLines(lines));
    Line(lines);
  }
  std::string Take() { return std::move(out_); }

 private:
  std::string out_;
};

void WriteMiscellaneous(const Settings& s, FileText& f) {
  f.Line("[Miscellaneous]");
  for (const MiscKey& k : MiscKeys()) {
    if (k.rule == MiscRule::kText) {
      f.Key(k.name, s.*k.text);
    } else if (k.rule != MiscRule::kLanguage) {
      f.Key(k.name, s.*k.number);
    } else if (std::string_view code = WrittenLanguageCode(s.intLanguage); !code.empty()) {
      f.Key(k.name, code);
    } else {
      // A base without a code (Spanish) leaves the line unfinished, so the
      // next key follows on it; older versions read such files this way.
      f.Raw("Language=");
    }
  }
}

void WriteQuoteHeader(std::string_view section, const std::string& text, int16_t flag,
                      FileText& f) {
  f.Line(section);
  f.MultiLine("Lines", text);
  f.Key("ChangeQuoteHeader", flag);
}

void WriteSignature(const SignatureRecord& sig, FileText& f) {
  f.Line("[Signature]");
  f.Key("UserName", sig.UserName);
  f.Key("e-mail", sig.email);
  f.Key("Distance", sig.Distance);
  f.MultiLine("SigLines", sig.text);
  f.Key("RandomSig", sig.RandomSig ? "1" : "0");
  for (const std::string& name : sig.SigFile) {
    if (!name.empty()) f.Key("SigFile", name);
  }
}

std::string_view TunnelSection(int32_t type) {
  if (type == kTypePop3) return "[POP3Server]";
  if (type == kTypeSmtp) return "[SMTPServer]";
  return "[NNTPServer]";
}

void WriteTunnel(const TunnelRecord& t, FileText& f) {
  f.Line(TunnelSection(t.tType));
  f.Key("ServerName", t.Server);
  f.Key("SrcPort", t.SrcPort);
  f.Key("DestPort", t.DestPort);
  f.PrintKey("AutoStart", t.AutoStart);
  f.PrintKey("SSL", t.SSL);
  // Written only when set, so files of tunnels without it stay as they were.
  if (t.StartTLS) f.PrintKey("StartTLS", true);
}

void WriteCustomHeaders(std::string_view section,
                        const std::array<CustomHeader, kCustomHeaderCount>& table, FileText& f) {
  for (const CustomHeader& h : table) {
    if (h.HeaderName.empty()) continue;
    f.Line(section);
    f.Key("HeaderName", h.HeaderName);
    f.Key("HeaderBody", h.HeaderBody);
    f.Key("InsertAfter", h.InsertAfter);
  }
}

void WriteBackgrounds(const Settings& s, FileText& f) {
  f.Line("[Backgrounds]");
  f.Key("MessageColor", s.strTlo);
  f.Key("MessageImage", s.strMsgBgPict);
  f.Key("MsgListColor", s.strTloListy);
  f.Key("MsgListImage", s.strListBgPict);
}

}  // namespace

std::string SettingsFileText(const Settings& s) {
  FileText f;
  f.Line(s.strIniComment);
  WriteMiscellaneous(s, f);
  WriteQuoteHeader("[NewsQuoteHeader]", s.strWrotkaNews, s.intWrotkaNews, f);
  WriteQuoteHeader("[MailQuoteHeader]", s.strWrotkaMail, s.intWrotkaMail, f);
  for (const SignatureRecord& sig : s.signatures) {
    if (!sig.IsEmpty()) WriteSignature(sig, f);
  }
  for (const TunnelRecord& t : s.tunnels) WriteTunnel(t, f);
  WriteCustomHeaders("[CustomHeader]", s.newsHeaders, f);
  WriteCustomHeaders("[CustomMailHeader]", s.mailHeaders, f);
  WriteBackgrounds(s, f);
  return f.Take();
}

std::string SettingsTargetPath(const Settings& s, const std::string& programDir) {
  if (!s.strIniPath.empty()) return s.strIniPath;
  return JoinPath(programDir, "OE_Brindle.ini");
}

Status WriteSettingsFile(const Settings& s, const std::string& path) {
  Status result;
  try {
    std::string folder = ParentFolder(path);
    if (!folder.empty() && !MakeFolders(folder)) {
      result = Status::Error("cannot create the settings folder \"" + folder + "\"");
    } else {
      result = ReplaceFileAtomically(path, SettingsFileText(s));
    }
  } catch (const std::exception& e) {
    result = Status::Error(std::string("saving the settings failed: ") + e.what());
  }
  if (!result.ok()) log::Error("settings not saved: " + result.message());
  return result;
}

Status SaveSettings2Ini(const Settings& s) {
  return WriteSettingsFile(s, SettingsTargetPath(s, ProgramFolder()));
}

}  // namespace brindle
