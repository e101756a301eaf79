#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>

#include "proxy/host_name.h"

namespace brindle {

std::string LookUpHostFullName() {
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
