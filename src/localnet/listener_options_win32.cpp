#include <winsock2.h>

#include "localnet/listener_options.h"

namespace brindle::localnet {

// SO_REUSEADDR would let another socket take over a port in use; the
// exclusive option makes a second bind fail with 10048 instead.
void PrepareListener(asio::ip::tcp::acceptor& acceptor) {
  using ExclusiveAddressUse = asio::detail::socket_option::boolean<SOL_SOCKET, SO_EXCLUSIVEADDRUSE>;
  std::error_code ignored;
  acceptor.set_option(ExclusiveAddressUse(true), ignored);
}

}  // namespace brindle::localnet
