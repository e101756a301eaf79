#include "localnet/peer_owner.h"

namespace brindle::localnet {

const char* Describe(PeerOwner owner) {
  switch (owner) {
    case PeerOwner::kOurUser:
      return "this user";
    case PeerOwner::kOtherUser:
      return "another user";
    case PeerOwner::kUnknown:
      return "an unknown owner";
  }
  return "?";
}

}  // namespace brindle::localnet
