// The program on POSIX: no client to host, so it runs headless. It starts
// like the Windows program (companion, settings, tunnels), then lives until
// SIGINT or SIGTERM, or, when given a client program, until that program
// ends, and shuts down in the same order with the same milestones.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace brindle::app {

struct HeadlessConfig {
  std::string programDir;           // where the companion lies
  std::string settingsDir;          // the settings folder in use
  std::vector<std::string> client;  // PROGRAM [ARGS...], or empty
  uint16_t companionControlPort = 5555;
  bool companionPortMoved = false;  // tell the companion its port
  std::optional<uint16_t> webPort;  // the browser view's port, when the environment sets it
  // Set by SIGINT/SIGTERM until start-up is over (the event loop is busy
  // reading the settings and runs no signal handler meanwhile); the program
  // takes both signals itself from then on.
  const std::atomic<bool>* stopRequested = nullptr;
};

// Runs the program to its end and returns the exit status: 0 after a
// signal, the client's status with a client, non-zero when start-up failed.
int RunHeadless(const HeadlessConfig& config);

}  // namespace brindle::app
