#include <winsock2.h>
#include <ws2tcpip.h>

#include <cstring>

#include "proxy/host_name.h"

namespace brindle {
namespace {

// Winsock must be up for gethostname; the proxy's io_context has usually
// started it already, and a second start is only counted.
struct WinsockUp {
  WinsockUp() {
    WSADATA data;
    ok = WSAStartup(MAKEWORD(2, 2), &data) == 0;
  }
  ~WinsockUp() {
    if (ok) WSACleanup();
  }
  bool ok = false;
};

}  // namespace

std::string LookUpHostFullName() {
  WinsockUp winsock;
  char host[256] = {};
  if (gethostname(host, sizeof host - 1) != 0) return {};
  std::string name(host, strnlen(host, sizeof host));
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_flags = AI_CANONNAME;
  addrinfo* found = nullptr;
  if (getaddrinfo(name.c_str(), nullptr, &hints, &found) != 0) return name;
  if (found && found->ai_canonname && found->ai_canonname[0]) name = found->ai_canonname;
  freeaddrinfo(found);
  return name;
}

}  // namespace brindle
