#include "proxy/tunnel_error.h"

#include <asio/error.hpp>

#include "core/language.h"

namespace brindle {

int TunnelErrorNumber(const std::error_code& ec) {
  if (!ec) return 0;
  if (ec == asio::error::address_in_use) return kErrorAddressInUse;
  return ec.value();
}

std::string TunnelStartErrorTitle(int16_t language) {
  return MessageBoxTitle(language, 132);
}

std::string TunnelStartErrorText(int16_t language, int error, int32_t srcPort,
                                 const std::string& description) {
  if (error == kErrorAddressInUse) {
    return std::string(LanguageString(language, 130)) + " " + std::to_string(srcPort) + " " +
           std::string(LanguageString(language, 131));
  }
  return std::string(LanguageString(language, 133)) + " " + std::to_string(error) + ". " +
         description;
}

}  // namespace brindle
