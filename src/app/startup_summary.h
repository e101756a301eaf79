// The short account of start-up that the program prints on standard error:
// which settings file was used, whether the companion answered, and how each
// tunnel came out.
#pragma once

#include <cstdint>
#include <string>

#include "core/startup.h"

namespace brindle::app {

std::string StartupSummary(const StartupReport& report, const std::string& companionFileName,
                           uint16_t companionControlPort);

// One tunnel, e.g. "NNTP 127.0.0.1:1119 -> news.example.com:119 plain: listening".
std::string TunnelLine(const TunnelOutcome& outcome);

}  // namespace brindle::app
