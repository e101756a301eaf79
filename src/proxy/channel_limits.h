// How much one channel may hold. A command line longer than the longest one
// ends the channel (with the protocol's error answer); a message larger than
// the largest held one passes on unprocessed. The defaults fit every real
// dialogue; the environment may move them (BRINDLE_MAX_COMMAND_LINE,
// BRINDLE_MAX_HELD_MESSAGE, in bytes), read once per process.
#pragma once

#include <cstddef>

namespace brindle {

struct ChannelLimits {
  static constexpr size_t kDefaultLongestCommandLine = 8 * 1024;
  static constexpr size_t kDefaultLargestHeldMessage = size_t{256} << 20;

  size_t longestCommandLine = kDefaultLongestCommandLine;
  size_t largestHeldMessage = kDefaultLargestHeldMessage;

  // The defaults with the environment's overrides; a bad value is logged and ignored.
  static const ChannelLimits& FromEnvironment();
};

}  // namespace brindle
