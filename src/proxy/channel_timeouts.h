// How long a channel waits for a peer before it gives its pair back. The
// pool of pairs is shared by every tunnel, so a dead or hostile peer must
// not hold one for ever; a transfer that moves bytes is never cut.
#pragma once

#include <chrono>

namespace brindle {

struct ChannelTimeouts {
  // Nothing in either direction for this long: the channel closes. Servers
  // themselves drop a client silent between commands after about as long.
  std::chrono::milliseconds clientIdle = std::chrono::minutes(10);
  // The server's greeting after the connect, and its first answer to what
  // the client sent, must start within this long.
  std::chrono::milliseconds serverWait = std::chrono::minutes(2);
};

// The defaults, overridden by BRINDLE_CLIENT_IDLE_SECONDS and
// BRINDLE_SERVER_WAIT_SECONDS (whole seconds, 1 or more); an override that
// is not a number is logged and ignored.
ChannelTimeouts ChannelTimeoutsFromEnvironment();

}  // namespace brindle
