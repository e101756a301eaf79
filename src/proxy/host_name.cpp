#include "proxy/host_name.h"

#include <asio/io_context.hpp>
#include <asio/ip/host_name.hpp>
#include <asio/ip/tcp.hpp>

namespace brindle {

std::string HostFullName() {
  static const std::string name = LookUpHostFullName();
  return name;
}

std::string LookUpHostFullName() {
  asio::error_code ec;
  const std::string host = asio::ip::host_name(ec);
  if (ec) return {};
  // With canonical_name the resolver's entries carry getaddrinfo's
  // ai_canonname when there is one.
  asio::io_context io;
  asio::ip::tcp::resolver resolver(io);
  const auto found = resolver.resolve(host, "", asio::ip::resolver_base::canonical_name, ec);
  if (ec || found.empty() || found.begin()->host_name().empty()) return host;
  return found.begin()->host_name();
}

std::string EhloName(const std::string& fullName, const std::string& addressLiteral) {
  if (fullName.find('.') != std::string::npos || addressLiteral.empty()) return fullName;
  return addressLiteral;
}

}  // namespace brindle
