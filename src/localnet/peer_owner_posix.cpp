#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

#include "localnet/peer_owner.h"

namespace brindle::localnet {
namespace {

using asio::ip::tcp;

// The 16 address bytes as they sit in memory (v4 as a v4-mapped v6 address),
// which is how the kernel prints them: each 32-bit word in host order hex.
using AddressBytes = std::array<uint8_t, 16>;

AddressBytes BytesOf(const asio::ip::address& address) {
  AddressBytes bytes{};
  if (address.is_v4()) {
    auto v4 = address.to_v4().to_bytes();
    bytes[10] = bytes[11] = 0xff;
    std::memcpy(bytes.data() + 12, v4.data(), 4);
  } else {
    bytes = address.to_v6().to_bytes();
  }
  return bytes;
}

// "0100007F:1F90" (tcp) or 32 hex digits and a port (tcp6).
bool ParseEndpoint(const std::string& text, AddressBytes& bytes, uint16_t& port) {
  const size_t colon = text.find(':');
  if (colon == std::string::npos) return false;
  const std::string hex = text.substr(0, colon);
  if (hex.size() != 8 && hex.size() != 32) return false;
  bytes = {};
  const size_t words = hex.size() / 8;
  uint8_t* target = hex.size() == 8 ? bytes.data() + 12 : bytes.data();
  if (words == 1) bytes[10] = bytes[11] = 0xff;
  for (size_t w = 0; w < words; ++w) {
    uint32_t word = static_cast<uint32_t>(std::stoul(hex.substr(w * 8, 8), nullptr, 16));
    std::memcpy(target + w * 4, &word, 4);
  }
  port = static_cast<uint16_t>(std::stoul(text.substr(colon + 1), nullptr, 16));
  return true;
}

// Looks for the socket whose local end is `peer` and remote end is `us`.
bool FindOwner(const char* table, const AddressBytes& peerAddr, uint16_t peerPort,
               const AddressBytes& ourAddr, uint16_t ourPort, uid_t& uid) {
  std::ifstream in(table);
  std::string line;
  std::getline(in, line);  // the column titles
  while (std::getline(in, line)) {
    std::istringstream fields(line);
    std::string slot, local, remote, state, queues, timer, retransmits;
    unsigned long owner = 0;
    if (!(fields >> slot >> local >> remote >> state >> queues >> timer >> retransmits >> owner))
      continue;
    AddressBytes la, ra;
    uint16_t lp = 0, rp = 0;
    try {
      if (!ParseEndpoint(local, la, lp) || !ParseEndpoint(remote, ra, rp)) continue;
    } catch (const std::exception&) {
      continue;
    }
    if (lp == peerPort && rp == ourPort && la == peerAddr && ra == ourAddr) {
      uid = static_cast<uid_t>(owner);
      return true;
    }
  }
  return false;
}

}  // namespace

bool CanTellOwners() {
  return true;
}

PeerOwner OwnerOfPeer(const tcp::socket& socket) {
  std::error_code ec1, ec2;
  const tcp::endpoint us = socket.local_endpoint(ec1);
  const tcp::endpoint peer = socket.remote_endpoint(ec2);
  if (ec1 || ec2) return PeerOwner::kUnknown;
  if (!peer.address().is_loopback() &&
      !(peer.address().is_v6() && peer.address().to_v6().is_v4_mapped() &&
        asio::ip::make_address_v4(asio::ip::v4_mapped, peer.address().to_v6()).is_loopback()))
    return PeerOwner::kOtherUser;
  const AddressBytes peerAddr = BytesOf(peer.address());
  const AddressBytes ourAddr = BytesOf(us.address());
  uid_t uid = 0;
  // A v4 socket of the peer is listed in tcp, a v6 (or dual-stack) one in tcp6.
  if (!FindOwner("/proc/net/tcp", peerAddr, peer.port(), ourAddr, us.port(), uid) &&
      !FindOwner("/proc/net/tcp6", peerAddr, peer.port(), ourAddr, us.port(), uid))
    return PeerOwner::kUnknown;
  return uid == geteuid() ? PeerOwner::kOurUser : PeerOwner::kOtherUser;
}

}  // namespace brindle::localnet
