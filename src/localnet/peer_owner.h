// Who owns the socket at the other end of a loopback TCP connection. Any
// user of the machine can connect to 127.0.0.1 or listen there, so the
// program and its companion ask before they trust a connection: on Linux the
// kernel's socket tables name the owning user of each socket, on Windows the
// TCP table names the owning process, whose user is then compared.
#pragma once

#include <asio/ip/tcp.hpp>

namespace brindle::localnet {

enum class PeerOwner {
  kOurUser,    // the same user as this process
  kOtherUser,  // someone else: refuse
  kUnknown,    // not found in the tables (the peer already went, or no table)
};

// `socket` must be connected. A peer that is not on a loopback address
// counts as another user's.
PeerOwner OwnerOfPeer(const asio::ip::tcp::socket& socket);

const char* Describe(PeerOwner owner);

// False where the system cannot name owners at all (Windows programs run by
// Wine): every answer is then kUnknown and the control key alone decides.
bool CanTellOwners();

}  // namespace brindle::localnet
