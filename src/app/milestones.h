// The shut-down milestones, each one entry in the operating system's log.
// The texts are the same on every platform so that one search finds them.
#pragma once

namespace brindle::app::milestone {

inline constexpr const char* kClientExited = "OE exited";
inline constexpr const char* kMutexReleased = "Mutex released";
inline constexpr const char* kHandleClosed = "Handle closed";
inline constexpr const char* kTunnelsClosed = "tunnels closed";
inline constexpr const char* kUnloaded = "OEBR unloaded";

}  // namespace brindle::app::milestone
