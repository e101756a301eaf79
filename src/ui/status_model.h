// What the status page shows, read straight from the proxy on its own
// thread: each tunnel with its totals, each live channel with its protocol
// state, the recently transferred data (already masked by the proxy's
// display) and how often each rewriting and filter step changed a message.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/settings.h"
#include "proxy/step_counts.h"

namespace brindle {
class Proxy;
class CChannel;
}  // namespace brindle

namespace brindle::ui {

struct TunnelStatus {
  int32_t type = 0;  // kTypeNntp, kTypePop3, kTypeSmtp
  int32_t srcPort = 0;
  std::string server;
  int32_t destPort = 0;
  bool tls = false;
  bool listening = false;
  int startError = 0;  // 0 when listening or never started
  uint64_t bytesFromClient = 0;
  uint64_t bytesFromServer = 0;
  size_t channels = 0;
};

struct ChannelStatus {
  int16_t index = 0;
  int32_t type = 0;
  std::string state;  // "posting", "collecting", ...
  uint64_t bytesFromClient = 0;
  uint64_t bytesFromServer = 0;
  // The client switched to TLS inside a plain tunnel: its messages now pass
  // without rewriting or filtering.
  bool tlsInsidePlain = false;
};

struct StatusModel {
  std::vector<TunnelStatus> tunnels;
  std::vector<ChannelStatus> channels;
  std::string recentlyTransferred;
  uint64_t piecesShown = 0;
  StepCounts counts;
};

StatusModel ReadStatus(const Proxy& proxy);

// The channel's protocol state as the status table names it.
std::string ChannelStateName(const CChannel& channel);

// The pages name protocols as the rest of the program does.
using brindle::ProtocolName;

}  // namespace brindle::ui
