// Who may use the browser view. The pages listen on 127.0.0.1 only, but any
// web page the user visits could still aim requests at that address, so:
// - a random secret made at start is needed, given once in the address the
//   program prints and then held in an HttpOnly, SameSite=Strict cookie;
// - the Host header must name the loopback address or "localhost" with our
//   port, so that a foreign name re-pointed at 127.0.0.1 gets nothing;
// - a change is a POST whose Origin (or, lacking one, Referer) is this
//   view, carrying the token of the page it came from.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace brindle::web {

inline constexpr std::string_view kSecretCookie = "brindle_key";
inline constexpr std::string_view kSecretFileName = "web.secret";

// 32 hex digits from the system's random source.
std::string MakeSecret();
// Writes the secret into `dir`/web.secret, readable by its owner only.
bool SaveSecret(const std::string& dir, const std::string& secret, std::string& error);

bool HostAllowed(std::string_view host, uint16_t port);
// `origin` and `referer` as sent (empty when absent). A request with
// neither is refused: every browser that runs our pages sends one.
bool SameOrigin(std::string_view origin, std::string_view referer, uint16_t port);
std::optional<std::string> CookieValue(std::string_view cookieHeader, std::string_view name);
// Compares without stopping at the first difference.
bool SecretsEqual(std::string_view a, std::string_view b);

class AccessRules {
 public:
  AccessRules(std::string secret, uint16_t port) : secret_(std::move(secret)), port_(port) {}

  const std::string& Secret() const { return secret_; }
  uint16_t Port() const { return port_; }
  // The per-page token that a POST from page `page` must carry.
  const std::string& PageToken(const std::string& page);
  bool TokenMatches(const std::string& page, std::string_view token) const;

 private:
  std::string secret_;
  uint16_t port_;
  std::map<std::string, std::string> tokens_;
};

}  // namespace brindle::web
