// The numbers and texts a tunnel reports when its listener cannot start.
#pragma once

#include <cstdint>
#include <string>
#include <system_error>

namespace brindle {

// "Address already in use" is 10048 on every platform, the number users of
// the program know from its Windows origins; other errors keep the system's.
inline constexpr int kErrorAddressInUse = 10048;
int TunnelErrorNumber(const std::error_code& ec);

// The box shown when `start` fails, in the language `language` (a base).
std::string TunnelStartErrorTitle(int16_t language);
std::string TunnelStartErrorText(int16_t language, int error, int32_t srcPort,
                                 const std::string& description);

}  // namespace brindle
