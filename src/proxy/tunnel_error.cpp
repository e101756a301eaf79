#include "proxy/tunnel_error.h"

#include <asio/error.hpp>

namespace brindle {
namespace {

// The tunnel texts of the language tables, until the tables' lookup is
// available to the proxy; every language gets the English texts meanwhile.
std::string TunnelString(int16_t /*language*/, int offset) {
  switch (offset) {
    case 130:
      return "Port";
    case 131:
      return "is already in use. Enter another port number.";
    case 132:
      return "tunnel starting error";
    case 133:
      return "There was an error number";
    default:
      return {};
  }
}

}  // namespace

int TunnelErrorNumber(const std::error_code& ec) {
  if (!ec) return 0;
  if (ec == asio::error::address_in_use) return kErrorAddressInUse;
  return ec.value();
}

std::string TunnelStartErrorTitle(int16_t language) {
  return "OE Brindle - " + TunnelString(language, 132);
}

std::string TunnelStartErrorText(int16_t language, int error, int32_t srcPort,
                                 const std::string& description) {
  if (error == kErrorAddressInUse) {
    return TunnelString(language, 130) + " " + std::to_string(srcPort) + " " +
           TunnelString(language, 131);
  }
  return TunnelString(language, 133) + " " + std::to_string(error) + ". " + description;
}

}  // namespace brindle
