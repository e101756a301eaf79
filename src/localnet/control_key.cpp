#include "localnet/control_key.h"

#include <stdexcept>

namespace brindle::localnet {

std::string NewControlKey() {
  unsigned char bytes[32];
  // Without a secure source there is no key worth handing out; the program
  // cannot protect its companion, so it must not pretend to.
  if (!SecureRandom(bytes, sizeof bytes)) throw std::runtime_error("no secure random source");
  static const char kHex[] = "0123456789abcdef";
  std::string key;
  for (unsigned char b : bytes) {
    key += kHex[b >> 4];
    key += kHex[b & 15];
  }
  return key;
}

std::string ControlKeyLine(std::string_view key) {
  return "k:" + std::string(key) + "\r\n";
}

bool SameKey(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  unsigned char diff = 0;
  for (size_t i = 0; i < a.size(); ++i) diff |= static_cast<unsigned char>(a[i] ^ b[i]);
  return diff == 0;
}

}  // namespace brindle::localnet
