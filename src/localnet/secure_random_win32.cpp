#include <windows.h>
// bcrypt.h needs windows.h first.
#include <bcrypt.h>

#include "localnet/control_key.h"

namespace brindle::localnet {

bool SecureRandom(unsigned char* out, size_t size) {
  return BCryptGenRandom(nullptr, out, static_cast<ULONG>(size), BCRYPT_USE_SYSTEM_PREFERRED_RNG) >=
         0;
}

}  // namespace brindle::localnet
