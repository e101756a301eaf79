#include "web/web_view.h"

#include "core/language.h"
#include "core/log.h"
#include "proxy/proxy.h"
#include "rewrite/filter_log.h"
#include "rewrite/spammer_list_file.h"
#include "ui/dry_run.h"
#include "ui/status_model.h"
#include "web/web_assets.h"
#include "web/web_captions.h"
#include "web/web_options.h"
#include "web/web_text.h"

namespace brindle::web {
namespace {

// How many lines of the filter log the status page shows.
constexpr size_t kFilterLogShown = 20;

// The recently transferred data is kept only while someone watches it.
constexpr std::chrono::seconds kDisplayLinger{10};

WebResponse Refused(int status, std::string_view why) {
  return {status, "text/plain; charset=utf-8", std::string(why) + "\n", {}};
}

std::string Field(const std::map<std::string, std::string>& form, const std::string& key) {
  auto it = form.find(key);
  return it == form.end() ? std::string() : it->second;
}

std::string Number(uint64_t n) {
  return std::to_string(n);
}

// What a filter did to a logged message, as caption keys: the page shows
// them in its own language, while the log file keeps its fixed names.
std::string ChangeKeys(const DownloadChanges& changes) {
  static constexpr const char* kKeys[kDownloadStepCount] = {
      "change.controlChars", "change.beginLines", "change.subjectMarked", "change.spammerList",
      "change.multipartRelabelled"};
  std::string json = "[";
  for (int i = 0; i < kDownloadStepCount; ++i) {
    if (!changes.Has(static_cast<DownloadStep>(i))) continue;
    json += std::string(json.size() > 1 ? "," : "") + "\"" + kKeys[i] + "\"";
  }
  return json + "]";
}

std::string CountsJson(const StepCounts& c) {
  return "{\"headersReplaced\":" + Number(c.headersReplaced) +
         ",\"customHeadersInserted\":" + Number(c.customHeadersInserted) +
         ",\"referencesShortened\":" + Number(c.referencesShortened) +
         ",\"signaturesAppended\":" + Number(c.signaturesAppended) +
         ",\"controlCharsBlanked\":" + Number(c.controlCharsBlanked) +
         ",\"beginLinesDisarmed\":" + Number(c.beginLinesDisarmed) +
         ",\"subjectsMarked\":" + Number(c.subjectsMarked) +
         ",\"multipartsRelabelled\":" + Number(c.multipartsRelabelled) +
         ",\"sendersListed\":" + Number(c.sendersListed) + "}";
}

std::string StatusJson(const ui::StatusModel& s) {
  std::string json = "{\"tunnels\":[";
  for (size_t i = 0; i < s.tunnels.size(); ++i) {
    const ui::TunnelStatus& t = s.tunnels[i];
    json += std::string(i ? "," : "") + "{\"protocol\":\"" + ui::ProtocolName(t.type) +
            "\",\"srcPort\":" + std::to_string(t.srcPort) +
            ",\"server\":" + JsonString(CodePageToUtf8(t.server)) +
            ",\"destPort\":" + std::to_string(t.destPort) +
            ",\"tls\":" + (t.tls ? "true" : "false") +
            ",\"listening\":" + (t.listening ? "true" : "false") +
            ",\"startError\":" + std::to_string(t.startError) +
            ",\"bytesFromClient\":" + Number(t.bytesFromClient) +
            ",\"bytesFromServer\":" + Number(t.bytesFromServer) +
            ",\"channels\":" + Number(t.channels) + "}";
  }
  json += "],\"channels\":[";
  for (size_t i = 0; i < s.channels.size(); ++i) {
    const ui::ChannelStatus& c = s.channels[i];
    json += std::string(i ? "," : "") + "{\"index\":" + std::to_string(c.index) +
            ",\"protocol\":\"" + ui::ProtocolName(c.type) + "\",\"state\":" + JsonString(c.state) +
            ",\"bytesFromClient\":" + Number(c.bytesFromClient) +
            ",\"bytesFromServer\":" + Number(c.bytesFromServer) +
            ",\"tlsInsidePlain\":" + (c.tlsInsidePlain ? "true" : "false") + "}";
  }
  json += "],\"recent\":" + JsonString(CodePageToUtf8(s.recentlyTransferred)) +
          ",\"pieces\":" + Number(s.piecesShown) + ",\"counts\":" + CountsJson(s.counts) + "}";
  return json;
}

}  // namespace

WebView::WebView(asio::io_context& io, Proxy& proxy, SettingsStore& store, AccessRules& rules,
                 SaveSettings save)
    : proxy_(proxy),
      store_(store),
      rules_(rules),
      save_(save),
      languages_(store, windows_, [save](const Settings& s) { save(s); }),
      // Already on the proxy's thread: answers run where they arrive.
      tunnels_(
          io, [&proxy] { return &proxy; }, [](std::function<void()> f) { f(); }),
      applier_(store, &tunnels_, save),
      displayOff_(io) {}

WebResponse WebView::Handle(const WebRequest& request) {
  if (!HostAllowed(request.host, rules_.Port()))
    return Refused(403, "This address is served to 127.0.0.1 and localhost only.");
  const size_t question = request.target.find('?');
  const std::string path = request.target.substr(0, question);
  const std::string query =
      question == std::string::npos ? std::string() : request.target.substr(question + 1);
  if (request.method == "GET" && path == "/" && query.rfind("key=", 0) == 0) return SignIn(query);
  auto cookie = CookieValue(request.cookie, kSecretCookie);
  if (!cookie || !SecretsEqual(*cookie, rules_.Secret()))
    return Refused(403, "Open the address that brindle printed when it started.");
  if (request.method == "GET") return Get(path, query);
  if (request.method == "POST") return Post(path, request);
  return Refused(405, "Only GET and POST are served.");
}

// The printed address carries the secret once; from then on the cookie
// does, and the address bar no longer shows it.
WebResponse WebView::SignIn(const std::string& query) {
  const std::string key = UrlDecode(query.substr(4));
  if (!SecretsEqual(key, rules_.Secret()))
    return Refused(403, "This key is not the one brindle printed.");
  WebResponse response{303, "text/plain; charset=utf-8", "", {}};
  response.headers.push_back({"Location", "/"});
  response.headers.push_back({"Set-Cookie", std::string(kSecretCookie) + "=" + rules_.Secret() +
                                                "; Path=/; HttpOnly; SameSite=Strict"});
  return response;
}

WebResponse WebView::Get(const std::string& path, const std::string& query) {
  if (path == "/api/status") return Status();
  if (path == "/api/strings") return Strings();
  if (path == "/api/filterlog") return FilterLog();
  if (path == "/api/options") return {200, "application/json", OptionsJson(*store_.Current()), {}};
  if (path == "/api/token") {
    const std::string page = UrlDecode(query.substr(query.rfind("page=", 0) == 0 ? 5 : 0));
    return {200, "application/json", "{\"token\":" + JsonString(rules_.PageToken(page)) + "}", {}};
  }
  if (const Asset* asset = FindAsset(path)) {
    WebResponse response{200, std::string(asset->contentType), std::string(asset->body), {}};
    response.headers.push_back({"Cache-Control", "no-store"});
    return response;
  }
  return Refused(404, "No such page.");
}

WebResponse WebView::Post(const std::string& path, const WebRequest& request) {
  if (!SameOrigin(request.origin, request.referer, rules_.Port()))
    return Refused(403, "Changes are accepted from this program's own pages only.");
  if (request.contentType.rfind("application/x-www-form-urlencoded", 0) != 0)
    return Refused(415, "Send the form URL-encoded.");
  if (request.body.size() > kMaxBodySize) return Refused(413, "The request is too large.");
  const auto form = ParseForm(request.body);
  const std::string page = Field(form, "page");
  if (!rules_.TokenMatches(page, Field(form, "token")))
    return Refused(403, WebCaption(store_.Current()->intLanguage, "page.stale"));
  if (path == "/api/dryrun") return DryRunAnswer(form);
  if (path == "/api/language") return Language(form);
  if (path == "/api/spammer") return AddToSpammers(Utf8ToCodePage(Field(form, "sender")));
  if (path == "/api/options")
    return {200, "application/json", ApplyOptions(form, store_, applier_), {}};
  return Refused(404, "No such action.");
}

WebResponse WebView::Status() {
  KeepDisplayOn();
  return {200, "application/json", StatusJson(ui::ReadStatus(proxy_)), {}};
}

// The page keeps the transferred data shown while it polls, and lets it go
// once nobody has asked for a while.
void WebView::KeepDisplayOn() {
  proxy_.SetDisplayTransferredData(true);
  displayOff_.expires_after(kDisplayLinger);
  displayOff_.async_wait([this](const std::error_code& ec) {
    if (!ec) proxy_.SetDisplayTransferredData(false);
  });
}

// Every language string of the current language, by offset, and the
// browser view's own captions in the same language, by key.
WebResponse WebView::Strings() {
  const auto settings = store_.Current();
  std::string json =
      "{\"language\":\"" + std::string(TwoLetterCode(settings->intLanguage)) + "\",\"strings\":{";
  for (int offset = 1; offset <= kLanguageStringCount; ++offset) {
    json += (offset > 1 ? ",\"" : "\"") + std::to_string(offset) +
            "\":" + JsonString(LanguageString(*settings, offset));
  }
  json += "},\"web\":{";
  bool first = true;
  for (const auto& [key, text] : WebCaptions(settings->intLanguage)) {
    json += (first ? "" : ",") + JsonString(key) + ":" + JsonString(text);
    first = false;
  }
  return {200, "application/json", json + "}}", {}};
}

WebResponse WebView::DryRunAnswer(const std::map<std::string, std::string>& form) {
  const auto kind = Field(form, "kind") == "mail" ? ui::DryRunKind::kMail : ui::DryRunKind::kNews;
  const auto lines = ui::DryRun(Utf8ToCodePage(Field(form, "text")), kind, *store_.Current());
  std::string json = "{\"lines\":[";
  for (size_t i = 0; i < lines.size(); ++i) {
    json += std::string(i ? "," : "") + "{\"text\":" + JsonString(CodePageToUtf8(lines[i].text)) +
            ",\"changed\":" + (lines[i].changed ? "true" : "false") + "}";
  }
  return {200, "application/json", json + "]}", {}};
}

WebResponse WebView::Language(const std::map<std::string, std::string>& form) {
  auto base = BaseFromTwoLetterCode(Field(form, "language"));
  auto item = base ? LanguageMenuItemOf(*base) : std::nullopt;
  if (!item) return Refused(400, WebCaption(store_.Current()->intLanguage, "language.unknown"));
  languages_.Click(*item);
  return Strings();
}

// The newest lines of the filter log, newest last, field by field.
WebResponse WebView::FilterLog() {
  const auto settings = store_.Current();
  std::string json = "{\"lines\":[";
  bool first = true;
  if (!settings->strLog.empty()) {
    for (const std::string& line : FilterLogTail(settings->strLog, kFilterLogShown)) {
      auto entry = ParseFilterLogLine(line);
      if (!entry) continue;
      json += std::string(first ? "" : ",") +
              "{\"time\":" + JsonString(CodePageToUtf8(entry->time)) +
              ",\"tunnel\":" + JsonString(CodePageToUtf8(entry->tunnel)) +
              ",\"sender\":" + JsonString(CodePageToUtf8(entry->sender)) +
              ",\"subject\":" + JsonString(CodePageToUtf8(entry->subject)) +
              ",\"changes\":" + ChangeKeys(entry->changes) + "}";
      first = false;
    }
  }
  return {200, "application/json", json + "]}", {}};
}

WebResponse WebView::AddToSpammers(const std::string& sender) {
  const auto settings = store_.Current();
  if (settings->strSpammers.empty())
    return Refused(409, WebCaption(settings->intLanguage, "spammer.noList"));
  const char* result = "failed";
  switch (AddSpammer(settings->strSpammers, sender)) {
    case AddSpammerResult::kAdded:
      result = "added";
      break;
    case AddSpammerResult::kAlreadyListed:
      result = "listed";
      break;
    case AddSpammerResult::kNotAnEntry:
      result = "notAddress";
      break;
    case AddSpammerResult::kNotSaved:
      break;
  }
  return {200, "application/json", std::string("{\"result\":\"") + result + "\"}", {}};
}

}  // namespace brindle::web
