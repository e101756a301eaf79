// The key that proves the program to the companion it started. The program
// makes a fresh one per run, hands it to the companion through the
// environment (never on a command line, which other users can read), and
// sends it as the first line of every control connection. A companion that
// was given a key obeys no connection without it.
#pragma once

#include <string>
#include <string_view>

namespace brindle::localnet {

inline constexpr const char* kControlKeyVariable = "BRINDLE_COMPANION_KEY";

// 64 hex digits from the system's secure random source.
std::string NewControlKey();

// "k:" + key + CR LF: the line that opens a control connection.
std::string ControlKeyLine(std::string_view key);

// Compares in time independent of where the two differ.
bool SameKey(std::string_view a, std::string_view b);

// Fills `size` bytes from the operating system's secure random source.
bool SecureRandom(unsigned char* out, size_t size);

}  // namespace brindle::localnet
