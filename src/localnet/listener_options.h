// Socket options of a tunnel's listener, which differ by platform: a port
// must be re-bindable right after a stop (connections in TIME_WAIT), yet two
// listeners must never share one port.
#pragma once

#include <asio/ip/tcp.hpp>

namespace brindle::localnet {

// Called between open and bind. Failures only lose the option; bind decides.
void PrepareListener(asio::ip::tcp::acceptor& acceptor);

}  // namespace brindle::localnet
