// The loopback ports handed to the companion for routes. The companion binds
// a route's port only when it processes the "a:" command, which may still be
// queued; a second tunnel starting meanwhile must not pick the same port
// just because nobody listens on it yet.
#pragma once

#include <cstdint>
#include <set>

namespace brindle {

class RoutePorts {
 public:
  bool Taken(uint16_t port) const { return ports_.count(port) != 0; }
  void Claim(uint16_t port) { ports_.insert(port); }
  void Release(uint16_t port) { ports_.erase(port); }

 private:
  std::set<uint16_t> ports_;
};

}  // namespace brindle
