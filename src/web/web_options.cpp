#include "web/web_options.h"

#include <algorithm>
#include <filesystem>

#include "core/language.h"
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
    std::string text = Value(form, p + "text");
    // Browsers send CR LF; the record keeps lines joined by CR LF, no end.
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
    page.SetText(text);
    page.SetDistance(Value(form, p + "distance"));
    page.SetRandom(Ticked(form, p + "random"));
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

std::string Refusal(const Settings& s, const ui::PageMessage& m) {
  return std::string("{\"applied\":false,\"title\":") + JsonString(MessageBoxTitle(s, m.title)) +
         ",\"text\":" + JsonString(std::string(LanguageString(s, m.text)) + m.detail) + "}";
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
    json += std::string(first ? "" : ",") + "{\"record\":" + std::to_string(record) +
            ",\"name\":" + Str(r.UserName) + ",\"email\":" + Str(r.email) +
            ",\"distance\":" + std::to_string(r.Distance) + ",\"random\":" + Bool(r.RandomSig) +
            ",\"text\":" + Str(r.text) + "}";
    first = false;
  }
  const ui::FiltersPage& f = pages.frmFilters;
  json += std::string("],\"filters\":{\"BeginFilter\":") + Bool(f.chkBeginFilter) +
          ",\"CharFiltering\":" + std::to_string(static_cast<int>(f.charFilter)) +
          ",\"AsianFilter\":" + Bool(f.chkAsianFilter) +
          ",\"AFPercentage\":" + Str(f.txtAFPercentage) + ",\"AFMin\":" + Str(f.txtAFMin) + "}";
  json += ",\"misc\":{\"Strip\":" + Str(pages.frmMiscellaneous.txtStrip) +
          ",\"FQDN\":" + Bool(pages.frmMiscellaneous.chkFQDN) + "}}";
  return json;
}

std::string ApplyOptions(const Form& form, SettingsStore& store, ui::SettingsApplier& applier) {
  const auto snapshot = store.Current();
  ui::OptionPages pages;
  pages.frmTunele.SetControl(nullptr);
  pages.Load(snapshot);
  if (auto refusal = FillTunnels(pages.frmTunele, form)) return Refusal(*snapshot, *refusal);
  FillHeaders(pages.frmHeaders, form, "news");
  FillHeaders(pages.frmHeadersMail, form, "mail");
  if (auto refusal = FillSignatures(pages.frmSygnaturka, form)) return Refusal(*snapshot, *refusal);
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
    pages.frmMiscellaneous.txtStrip = Value(form, "misc.Strip");
    pages.frmMiscellaneous.chkFQDN = Ticked(form, "misc.FQDN");
  }
  if (auto refusal = pages.Apply(applier)) return Refusal(*snapshot, refusal->second);
  return "{\"applied\":true}";
}

}  // namespace brindle::web
