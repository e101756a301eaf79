// The fixed socket pools of the proxy: 100 listening sockets for tunnels and
// 100 client/server pairs for channels, handed out by index from 1 upwards.
// An index is only a ticket; the sockets themselves are created when used.
#pragma once

#include <array>
#include <cstdint>

namespace brindle {

inline constexpr int kSocketPoolSize = 100;

class RelaySocketPool {
 public:
  // First free index 1..100, marked taken; 0 when all are taken.
  int16_t GetRelaySocket();
  void FreeRelaySocket(int16_t index);

 private:
  std::array<bool, kSocketPoolSize> RelaySocketInUse{};
};

// ChannelSocketState values of a pair.
enum : uint8_t { kPairFree = 0, kPairInUse = 1, kPairDestroying = 2 };

class ChannelSocketPool {
 public:
  // First free index 1..100, now in use; 0 when all 100 pairs are busy.
  int16_t GetChannelSocket();
  uint8_t State(int16_t index) const;
  void SetState(int16_t index, uint8_t state);
  int FreeCount() const;

 private:
  std::array<uint8_t, kSocketPoolSize> ChannelSocketState{};
};

}  // namespace brindle
