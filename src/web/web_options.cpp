#include "web/web_options.h"

#include <algorithm>
#include <filesystem>

#include "core/language.h"
#include "core/settings_lines.h"
#include "ui/about_page.h"
#include "ui/option_pages.h"
#include "web/web_text.h"

namespace brindle::web {
namespace {

std::string Str(std::string_view bytes) {
  return JsonString(CodePageToUtf8(bytes));
}
const char* Bool(bool on) {
  return on ? "true" : "false";
}

// A form value in the settings' code page; empty when absent.
std::string Value(const Form& form, const std::string& key) {
  auto it = form.find(key);
  return it == form.end() ? std::string() : Utf8ToCodePage(it->second);
}
bool Ticked(const Form& form, const std::string& key) {
  return Value(form, key) == "1";
}
bool Has(const Form& form, const std::string& key) {
  return form.count(key) > 0;
}

// A multi-line box as the settings keep it: lines joined by CR LF (browsers
// send LF), no line end after the last.
std::string Lines(const Form& form, const std::string& key) {
  std::string text = ini::CrLfLineEnds(Value(form, key));
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
  return text;
}

// One JSON object, member by member; values are already JSON.
class Object {
 public:
  Object& Add(std::string_view key, std::string_view json) {
    text_ += (text_.size() > 1 ? ",\"" : "\"") + std::string(key) + "\":" + std::string(json);
    return *this;
  }
  Object& Text(std::string_view key, std::string_view bytes) { return Add(key, Str(bytes)); }
  Object& Flag(std::string_view key, bool on) { return Add(key, Bool(on)); }
  std::string Close() const { return text_ + "}"; }

 private:
  std::string text_ = "{";
};

std::string HeadersJson(const ui::HeadersPage& page) {
  std::string json = std::string("{\"change\":") + Bool(page.changeIdentification) +
                     ",\"value\":" + Str(page.identification) +
                     ",\"changeMimeOLE\":" + Bool(page.changeMimeOLE) +
                     ",\"mimeOLE\":" + Str(page.mimeOLE) + ",\"rows\":[";
  const auto& table = page.WorkingCopy();
  for (size_t k = 0; k < table.size(); ++k) {
    json += std::string(k ? "," : "") + "[" + Str(table[k].HeaderName) + "," +
            Str(table[k].InsertAfter) + "," + Str(table[k].HeaderBody) + "]";
  }
  return json + "]}";
}

void FillHeaders(ui::HeadersPage& page, const Form& form, const std::string& prefix) {
  if (!Has(form, prefix + ".value")) return;  // the page was not sent: leave it
  page.changeIdentification = Ticked(form, prefix + ".change");
  page.identification = Value(form, prefix + ".value");
  page.changeMimeOLE = Ticked(form, prefix + ".changeMimeOLE");
  page.mimeOLE = Value(form, prefix + ".mimeOLE");
  using F = ui::HeadersPage::Field;
  for (int k = 0; k < kCustomHeaderCount; ++k) {
    // The page edits through its four rows: move the slider to the entry.
    page.SetSlider(std::min(k, ui::HeadersPage::kSliderMax));
    const int row = k - page.vscSuwak();
    const std::string n = std::to_string(k);
    page.Edit(row, F::txtHeaderName, Value(form, prefix + ".HeaderName" + n));
    page.Edit(row, F::txtInsertAfter, Value(form, prefix + ".InsertAfter" + n));
    page.Edit(row, F::txtHeaderBody, Value(form, prefix + ".HeaderBody" + n));
  }
}

std::optional<ui::PageMessage> FillTunnel(ui::TunnelDialog& dialog, const Form& form,
                                          const std::string& p) {
  dialog.txtServer = Value(form, p + "Server");
  dialog.txtSrcPort = Value(form, p + "SrcPort");
  dialog.txtDestPort = Value(form, p + "DestPort");
  dialog.chkAutoStart = Ticked(form, p + "AutoStart");
  dialog.chkSSL = dialog.SslAvailable() && Ticked(form, p + "SSL");
  return dialog.Validate();
}

// The tunnel rows as sent: each names the loaded tunnel it edits ("origin")
// or none for a new one. Loaded tunnels missing from the form are deleted.
std::optional<ui::PageMessage> FillTunnels(ui::TunnelsPage& page, const Form& form) {
  if (!Has(form, "tunnels")) return std::nullopt;
  const int count = std::clamp(std::atoi(Value(form, "tunnels").c_str()), 0, 100);
  std::map<size_t, std::string> edited;  // origin -> row prefix
  std::vector<std::string> added;
  for (int i = 0; i < count; ++i) {
    const std::string p = "tunnel" + std::to_string(i) + ".";
    const std::string origin = Value(form, p + "origin");
    if (origin.empty())
      added.push_back(p);
    else
      edited[static_cast<size_t>(std::atoi(origin.c_str()))] = p;
  }
  for (size_t i = page.Entries().size(); i-- > 0;) {
    if (!edited.count(*page.Entries()[i].origin)) page.Delete(i);
  }
  for (size_t i = 0; i < page.Entries().size(); ++i) {
    auto dialog = page.EditDialog(i);
    if (!dialog) continue;
    if (auto refusal = FillTunnel(*dialog, form, edited[*page.Entries()[i].origin])) return refusal;
    page.Edit(i, *dialog);
  }
  for (const std::string& p : added) {
    ui::TunnelDialog dialog = page.AddDialog();
    dialog.tType = std::clamp(std::atoi(Value(form, p + "tType").c_str()), 0, 2);
    if (auto refusal = FillTunnel(dialog, form, p)) return refusal;
    page.Add(dialog);
  }
  return std::nullopt;
}

// Senders as sent: "record" names a loaded one, none a new one.
std::optional<ui::PageMessage> FillSignatures(ui::SignaturesPage& page, const Form& form) {
  if (!Has(form, "senders")) return std::nullopt;
  const int count = std::clamp(std::atoi(Value(form, "senders").c_str()), 0, kSignatureCount);
  std::map<int, std::string> kept;
  std::vector<std::string> added;
  for (int i = 0; i < count; ++i) {
    const std::string p = "sender" + std::to_string(i) + ".";
    const std::string record = Value(form, p + "record");
    if (record.empty())
      added.push_back(p);
    else
      kept[std::atoi(record.c_str())] = p;
  }
  for (int record : page.Senders())
    if (!kept.count(record)) page.RemoveSender(record);
  auto fill = [&](int record, const std::string& p) -> std::optional<ui::PageMessage> {
    if (auto refusal = page.ChangeSender(record, Value(form, p + "name"), Value(form, p + "email")))
      return refusal;
    page.Select(record);
    page.SetText(Lines(form, p + "text"));
    page.SetDistance(Value(form, p + "distance"));
    page.SetRandom(Ticked(form, p + "random"));
    if (Has(form, p + "files")) {
      while (!page.Selected()->SigFile.empty()) page.RemoveFile(0);
      const int files = std::clamp(std::atoi(Value(form, p + "files").c_str()), 0, 1000);
      for (int k = 0; k < files; ++k) page.AddFile(Value(form, p + "file" + std::to_string(k)));
    }
    return std::nullopt;
  };
  for (const auto& [record, p] : kept)
    if (auto refusal = fill(record, p)) return refusal;
  for (const std::string& p : added) {
    int record = -1;
    if (auto refusal = page.AddSender(Value(form, p + "name"), Value(form, p + "email"), &record))
      return refusal;
    if (record >= 0)
      if (auto refusal = fill(record, p)) return refusal;
  }
  return std::nullopt;
}

// The pages whose fields map one to one onto form fields; a page whose
// fields were not sent is left as loaded.
void FillSimplePages(ui::OptionPages& pages, const Form& form) {
  if (Has(form, "filters.AFMin")) {
    ui::FiltersPage& f = pages.frmFilters;
    f.chkBeginFilter = Ticked(form, "filters.BeginFilter");
    f.charFilter = static_cast<ui::FiltersPage::CharFilter>(
        std::clamp(std::atoi(Value(form, "filters.CharFiltering").c_str()), 0, 2));
    f.chkAsianFilter = Ticked(form, "filters.AsianFilter");
    f.txtAFPercentage = Value(form, "filters.AFPercentage");
    f.txtAFMin = Value(form, "filters.AFMin");
  }
  if (Has(form, "misc.Strip")) {
    ui::MiscellaneousPage& m = pages.frmMiscellaneous;
    m.txtStrip = Value(form, "misc.Strip");
    m.chkFQDN = Ticked(form, "misc.FQDN");
    m.chkAutoMaximize = Ticked(form, "misc.AutoMaximize");
    m.chkClickSecWindow = Ticked(form, "misc.ClickSecWindow");
    m.chkWinamp = Ticked(form, "misc.Winamp");
    m.chkLogoffAfterClose = Ticked(form, "misc.LogoffAfterClose");
    m.txtAttachmentPath = Value(form, "misc.AttachmentPath");
    m.txtCCAddress = Value(form, "misc.CC");
    m.txtBCCAddress = Value(form, "misc.BCC");
    m.txtWebPort = Value(form, "misc.WebPort");
  }
  if (Has(form, "quotes.newsText")) {
    ui::QuoteHeadersPage& q = pages.frmWrotki;
    q.chkWrotkaNews = Ticked(form, "quotes.news");
    q.txtWrotkaNews = Lines(form, "quotes.newsText");
    q.chkWrotkaMail = Ticked(form, "quotes.mail");
    q.txtWrotkaMail = Lines(form, "quotes.mailText");
  }
  if (Has(form, "text.Wrap")) {
    ui::TextProcessingPage& t = pages.frmTextProcessing;
    t.txtWrap = Value(form, "text.Wrap");
    t.chkHorizontalQCompression = Ticked(form, "text.HorizontalQCompression");
    t.chkVerticalQCompression = Ticked(form, "text.VerticalQCompression");
    t.optBottomPosting = Ticked(form, "text.BottomPosting");
    t.chkCursorOnTop = Ticked(form, "text.CursorOnTop");
    t.chkOVRWarning = Ticked(form, "text.OVRWarning");
  }
  if (Has(form, "files.Log")) {
    ui::FilesPage& f = pages.frmFiles;
    f.txtStyles = Value(form, "files.Styles");
    f.txtSpammers = Value(form, "files.Spammers");
    f.txtSpammerAddress = Value(form, "files.SpammerAddress");
    f.txtLog = Value(form, "files.Log");
  }
  if (Has(form, "icon.TrayIcon")) {
    ui::IconPage& i = pages.frmIcon;
    i.chkTrayIcon = Ticked(form, "icon.TrayIcon");
    i.chkMinimizeOE = Ticked(form, "icon.MinimizeOE");
    i.chkTrayDoubleClick = Ticked(form, "icon.TrayDoubleClick");
  }
  // No button is chosen while the file holds a mode the page has none for.
  const std::string state = Value(form, "start.state");
  if (state == "0" || state == "1" || state == "2")
    pages.frmOEStart.state = static_cast<ui::ClientStartPage::WindowState>(state[0] - '0');
}

// The browser's tab of a page, so that a refusal shows the page it is about,
// as the options window selects it.
std::string TabOf(ui::OptionPages& p, const ui::OptionPage* page) {
  const std::pair<const ui::OptionPage*, const char*> tabs[] = {
      {&p.frmHeaders, "news-headers"}, {&p.frmHeadersMail, "mail-headers"},
      {&p.frmFilters, "filters"},      {&p.frmMiscellaneous, "misc"},
      {&p.frmTunele, "tunnel-page"},   {&p.frmSygnaturka, "signatures"},
      {&p.frmWrotki, "quotes"},        {&p.frmTextProcessing, "text"},
      {&p.frmFiles, "files"},          {&p.frmIcon, "icon"},
      {&p.frmOEStart, "start"}};
  for (const auto& [candidate, tab] : tabs)
    if (candidate == page) return tab;
  return {};
}

std::string Refusal(const Settings& s, const ui::PageMessage& m, std::string_view tab) {
  return Object()
      .Add("applied", "false")
      .Add("title", JsonString(MessageBoxTitle(s, m.title)))
      .Add("text", JsonString(std::string(LanguageString(s, m.text)) + m.detail))
      .Add("tab", JsonString(tab))
      .Close();
}

}  // namespace

std::string OptionsJson(const Settings& s) {
  ui::OptionPages pages;
  pages.Load(std::make_shared<const Settings>(s));
  std::error_code ec;
  std::string json = "{\"settingsFile\":" + Str(s.strIniPath) + ",\"settingsFileExists\":" +
                     Bool(!s.strIniPath.empty() && std::filesystem::exists(s.strIniPath, ec)) +
                     ",\"tunnels\":[";
  const auto& entries = pages.frmTunele.Entries();
  for (size_t i = 0; i < entries.size(); ++i) {
    const TunnelRecord& r = entries[i].record;
    json += std::string(i ? "," : "") + "{\"origin\":" + std::to_string(i) +
            ",\"tType\":" + std::to_string(r.tType) + ",\"Server\":" + Str(r.Server) +
            ",\"SrcPort\":" + std::to_string(r.SrcPort) +
            ",\"DestPort\":" + std::to_string(r.DestPort) + ",\"AutoStart\":" + Bool(r.AutoStart) +
            ",\"SSL\":" + Bool(r.SSL) + "}";
  }
  json += "],\"news\":" + HeadersJson(pages.frmHeaders) +
          ",\"mail\":" + HeadersJson(pages.frmHeadersMail) + ",\"senders\":[";
  bool first = true;
  for (int record : pages.frmSygnaturka.Senders()) {
    pages.frmSygnaturka.Select(record);
    const SignatureRecord& r = *pages.frmSygnaturka.Selected();
    std::string files = "[";
    for (const std::string& file : r.SigFile) files += (files.size() > 1 ? "," : "") + Str(file);
    const auto longLines = pages.frmSygnaturka.LongLineLimit();
    json += (first ? "" : ",") +
            Object()
                .Add("record", std::to_string(record))
                .Text("name", r.UserName)
                .Text("email", r.email)
                .Add("distance", std::to_string(r.Distance))
                .Flag("random", r.RandomSig)
                .Text("text", r.text)
                .Add("files", files + "]")
                .Add("longLineLimit", longLines ? std::to_string(*longLines) : "null")
                .Close();
    first = false;
  }
  const ui::FiltersPage& f = pages.frmFilters;
  json +=
      "],\"filters\":" + Object()
                             .Flag("BeginFilter", f.chkBeginFilter)
                             .Add("CharFiltering", std::to_string(static_cast<int>(f.charFilter)))
                             .Flag("AsianFilter", f.chkAsianFilter)
                             .Text("AFPercentage", f.txtAFPercentage)
                             .Text("AFMin", f.txtAFMin)
                             .Close();
  const ui::MiscellaneousPage& m = pages.frmMiscellaneous;
  json += ",\"misc\":" + Object()
                             .Text("Strip", m.txtStrip)
                             .Flag("FQDN", m.chkFQDN)
                             .Flag("AutoMaximize", m.chkAutoMaximize)
                             .Flag("ClickSecWindow", m.chkClickSecWindow)
                             .Flag("Winamp", m.chkWinamp)
                             .Flag("LogoffAfterClose", m.chkLogoffAfterClose)
                             .Text("AttachmentPath", m.txtAttachmentPath)
                             .Text("CC", m.txtCCAddress)
                             .Text("BCC", m.txtBCCAddress)
                             .Text("WebPort", m.txtWebPort)
                             .Close();
  const ui::QuoteHeadersPage& q = pages.frmWrotki;
  std::string legend = "[";
  for (int offset : ui::QuoteHeadersPage::kLegend)
    legend += (legend.size() > 1 ? "," : "") + std::to_string(offset);
  json += ",\"quotes\":" + Object()
                               .Flag("news", q.chkWrotkaNews)
                               .Text("newsText", q.txtWrotkaNews)
                               .Flag("mail", q.chkWrotkaMail)
                               .Text("mailText", q.txtWrotkaMail)
                               .Add("legend", legend + "]")
                               .Close();
  const ui::TextProcessingPage& t = pages.frmTextProcessing;
  json += ",\"text\":" + Object()
                             .Text("Wrap", t.txtWrap)
                             .Flag("HorizontalQCompression", t.chkHorizontalQCompression)
                             .Flag("VerticalQCompression", t.chkVerticalQCompression)
                             .Flag("BottomPosting", t.optBottomPosting)
                             .Flag("CursorOnTop", t.chkCursorOnTop)
                             .Flag("OVRWarning", t.chkOVRWarning)
                             .Close();
  const ui::FilesPage& files = pages.frmFiles;
  json += ",\"files\":" + Object()
                              .Text("Styles", files.txtStyles)
                              .Text("Spammers", files.txtSpammers)
                              .Text("SpammerAddress", files.txtSpammerAddress)
                              .Text("Log", files.txtLog)
                              .Close();
  const ui::IconPage& icon = pages.frmIcon;
  json += ",\"icon\":" + Object()
                             .Flag("TrayIcon", icon.chkTrayIcon)
                             .Flag("MinimizeOE", icon.chkMinimizeOE)
                             .Flag("TrayDoubleClick", icon.chkTrayDoubleClick)
                             .Close();
  const auto& state = pages.frmOEStart.state;
  json += ",\"start\":" +
          Object().Add("state", state ? std::to_string(static_cast<int>(*state)) : "null").Close();
  json += ",\"about\":" + Object().Text("version", ui::AboutPage::Version()).Close();
  return json + "}";
}

std::string ApplyOptions(const Form& form, SettingsStore& store, ui::SettingsApplier& applier) {
  const auto snapshot = store.Current();
  ui::OptionPages pages;
  pages.frmTunele.SetControl(nullptr);
  pages.Load(snapshot);
  if (auto refusal = FillTunnels(pages.frmTunele, form))
    return Refusal(*snapshot, *refusal, "tunnel-page");
  FillHeaders(pages.frmHeaders, form, "news");
  FillHeaders(pages.frmHeadersMail, form, "mail");
  if (auto refusal = FillSignatures(pages.frmSygnaturka, form))
    return Refusal(*snapshot, *refusal, "signatures");
  FillSimplePages(pages, form);
  if (auto refusal = pages.Apply(applier))
    return Refusal(*snapshot, refusal->second, TabOf(pages, refusal->first));
  return "{\"applied\":true}";
}

}  // namespace brindle::web
