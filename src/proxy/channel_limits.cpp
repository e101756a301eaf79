#include "proxy/channel_limits.h"

#include <charconv>
#include <cstdlib>
#include <string>
#include <string_view>

#include "core/log.h"

namespace brindle {
namespace {

void Override(const char* name, size_t& limit) {
  const char* value = std::getenv(name);
  if (value == nullptr) return;
  const std::string_view text(value);
  size_t parsed = 0;
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), parsed);
  if (ec != std::errc() || end != text.data() + text.size() || parsed == 0) {
    log::Warning(std::string(name) + "=" + std::string(text) +
                 " is not a positive number of bytes; the default " + std::to_string(limit) +
                 " stays");
    return;
  }
  limit = parsed;
  log::Info(std::string(name) + ": " + std::to_string(limit) + " bytes");
}

}  // namespace

const ChannelLimits& ChannelLimits::FromEnvironment() {
  static const ChannelLimits limits = [] {
    ChannelLimits l;
    Override("BRINDLE_MAX_COMMAND_LINE", l.longestCommandLine);
    Override("BRINDLE_MAX_HELD_MESSAGE", l.largestHeldMessage);
    return l;
  }();
  return limits;
}

}  // namespace brindle
