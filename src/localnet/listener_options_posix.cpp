#include "localnet/listener_options.h"

namespace brindle::localnet {

// SO_REUSEADDR here only lets a stopped tunnel listen again at once; a second
// listener on a port in use is still refused.
void PrepareListener(asio::ip::tcp::acceptor& acceptor) {
  std::error_code ignored;
  acceptor.set_option(asio::socket_base::reuse_address(true), ignored);
}

}  // namespace brindle::localnet
