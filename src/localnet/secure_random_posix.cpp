#include <sys/random.h>

#include <cerrno>

#include "localnet/control_key.h"

namespace brindle::localnet {

bool SecureRandom(unsigned char* out, size_t size) {
  while (size > 0) {
    ssize_t n = getrandom(out, size, 0);
    if (n < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    out += n;
    size -= static_cast<size_t>(n);
  }
  return true;
}

}  // namespace brindle::localnet
