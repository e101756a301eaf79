#include "proxy/channel_timeouts.h"

#include <cstdlib>
#include <string>

#include "core/log.h"

namespace brindle {
namespace {

void Override(const char* variable, std::chrono::milliseconds& limit) {
  const char* text = std::getenv(variable);
  if (!text || !*text) return;
  char* end = nullptr;
  const long seconds = std::strtol(text, &end, 10);
  if (*end != '\0' || seconds < 1 || seconds > 7 * 24 * 3600) {
    log::Warning(std::string(variable) + " ignored, not a number of seconds: " + text);
    return;
  }
  limit = std::chrono::seconds(seconds);
  log::Info(std::string(variable) + ": " + std::to_string(seconds) + " s");
}

}  // namespace

ChannelTimeouts ChannelTimeoutsFromEnvironment() {
  ChannelTimeouts timeouts;
  Override("BRINDLE_CLIENT_IDLE_SECONDS", timeouts.clientIdle);
  Override("BRINDLE_SERVER_WAIT_SECONDS", timeouts.serverWait);
  return timeouts;
}

}  // namespace brindle
