// The browser view's requests and answers, apart from the HTTP server that
// carries them, so that every access rule is checked by plain calls. All of
// it runs on the proxy's thread and reads the proxy and the settings
// directly.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>

#include "core/language_menu.h"
#include "core/settings_store.h"
#include "ui/proxy_tunnel_control.h"
#include "ui/settings_apply.h"
#include "web/web_access.h"

namespace brindle {
class Proxy;
}

namespace brindle::web {

struct WebRequest {
  std::string method;  // "GET", "POST", ...
  std::string target;  // path and query, as in the request line
  std::string host;
  std::string origin;
  std::string referer;
  std::string cookie;
  std::string contentType;
  std::string body;
};

struct WebResponse {
  int status = 200;
  std::string contentType = "application/json";
  std::string body;
  std::vector<std::pair<std::string, std::string>> headers;
};

// Request bodies larger than this are refused before they are read whole.
inline constexpr size_t kMaxBodySize = 256 * 1024;

class WebView {
 public:
  // Writes the whole settings file; false when it could not.
  using SaveSettings = std::function<bool(const Settings&)>;

  WebView(asio::io_context& io, Proxy& proxy, SettingsStore& store, AccessRules& rules,
          SaveSettings save);

  WebResponse Handle(const WebRequest& request);

 private:
  WebResponse Get(const std::string& path, const std::string& query);
  WebResponse Post(const std::string& path, const WebRequest& request);
  WebResponse SignIn(const std::string& query);
  WebResponse Status();
  WebResponse Strings();
  WebResponse DryRunAnswer(const std::map<std::string, std::string>& form);
  WebResponse Language(const std::map<std::string, std::string>& form);
  WebResponse FilterLog();
  WebResponse AddToSpammers(const std::string& sender);
  void KeepDisplayOn();

  Proxy& proxy_;
  SettingsStore& store_;
  AccessRules& rules_;
  SaveSettings save_;
  LanguageWindows windows_;
  LanguageMenu languages_;
  ui::ProxyTunnelControl tunnels_;
  ui::SettingsApplier applier_;
  asio::steady_timer displayOff_;
};

}  // namespace brindle::web
