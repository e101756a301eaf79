#include "web/web_access.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <random>

namespace brindle::web {
namespace {

bool IsOurAuthority(std::string_view authority, uint16_t port) {
  const std::string suffix = ":" + std::to_string(port);
  if (authority.size() <= suffix.size() ||
      authority.substr(authority.size() - suffix.size()) != suffix)
    return false;
  std::string host(authority.substr(0, authority.size() - suffix.size()));
  for (char& c : host) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return host == "127.0.0.1" || host == "localhost";
}

// "http://127.0.0.1:8119/anything" -> "127.0.0.1:8119".
std::optional<std::string_view> HttpAuthority(std::string_view url) {
  constexpr std::string_view kScheme = "http://";
  if (url.substr(0, kScheme.size()) != kScheme) return std::nullopt;
  url.remove_prefix(kScheme.size());
  return url.substr(0, url.find('/'));
}

}  // namespace

std::string MakeSecret() {
  std::random_device source;
  static const char kHex[] = "0123456789abcdef";
  std::string secret;
  for (int i = 0; i < 32; ++i) secret += kHex[source() & 15];
  return secret;
}

bool SaveSecret(const std::string& dir, const std::string& secret, std::string& error) {
  const std::string path = dir + "/" + std::string(kSecretFileName);
  // Made owner-only before anything is written, and re-made on each start
  // so that an older file's wider permissions do not carry over.
  unlink(path.c_str());
  int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
  if (fd < 0) {
    error = path + ": " + std::strerror(errno);
    return false;
  }
  const std::string line = secret + "\n";
  const bool ok = write(fd, line.data(), line.size()) == static_cast<ssize_t>(line.size());
  if (!ok) error = path + ": " + std::strerror(errno);
  close(fd);
  return ok;
}

bool HostAllowed(std::string_view host, uint16_t port) {
  return IsOurAuthority(host, port);
}

bool SameOrigin(std::string_view origin, std::string_view referer, uint16_t port) {
  std::string_view from = origin.empty() ? referer : origin;
  auto authority = HttpAuthority(from);
  return authority && IsOurAuthority(*authority, port);
}

std::optional<std::string> CookieValue(std::string_view header, std::string_view name) {
  while (!header.empty()) {
    size_t end = header.find(';');
    std::string_view pair = header.substr(0, end);
    header = end == std::string_view::npos ? std::string_view{} : header.substr(end + 1);
    while (!pair.empty() && pair.front() == ' ') pair.remove_prefix(1);
    size_t eq = pair.find('=');
    if (eq != std::string_view::npos && pair.substr(0, eq) == name)
      return std::string(pair.substr(eq + 1));
  }
  return std::nullopt;
}

bool SecretsEqual(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  unsigned char diff = 0;
  for (size_t i = 0; i < a.size(); ++i) diff |= static_cast<unsigned char>(a[i] ^ b[i]);
  return diff == 0;
}

const std::string& AccessRules::PageToken(const std::string& page) {
  auto [it, added] = tokens_.try_emplace(page);
  if (added) it->second = MakeSecret();
  return it->second;
}

bool AccessRules::TokenMatches(const std::string& page, std::string_view token) const {
  auto it = tokens_.find(page);
  return it != tokens_.end() && SecretsEqual(it->second, token);
}

}  // namespace brindle::web
