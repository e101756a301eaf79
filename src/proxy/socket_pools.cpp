#include "proxy/socket_pools.h"

#include <algorithm>

namespace brindle {

int16_t RelaySocketPool::GetRelaySocket() {
  for (int i = 0; i < kSocketPoolSize; ++i) {
    if (!RelaySocketInUse[i]) {
      RelaySocketInUse[i] = true;
      return static_cast<int16_t>(i + 1);
    }
  }
  return 0;
}

void RelaySocketPool::FreeRelaySocket(int16_t index) {
  if (index >= 1 && index <= kSocketPoolSize) RelaySocketInUse[index - 1] = false;
}

int16_t ChannelSocketPool::GetChannelSocket() {
  for (int i = 0; i < kSocketPoolSize; ++i) {
    if (ChannelSocketState[i] == kPairFree) {
      ChannelSocketState[i] = kPairInUse;
      return static_cast<int16_t>(i + 1);
    }
  }
  return 0;
}

uint8_t ChannelSocketPool::State(int16_t index) const {
  if (index < 1 || index > kSocketPoolSize) return kPairFree;
  return ChannelSocketState[index - 1];
}

void ChannelSocketPool::SetState(int16_t index, uint8_t state) {
  if (index >= 1 && index <= kSocketPoolSize) ChannelSocketState[index - 1] = state;
}

int ChannelSocketPool::FreeCount() const {
  return static_cast<int>(
      std::count(ChannelSocketState.begin(), ChannelSocketState.end(), kPairFree));
}

}  // namespace brindle
