// The program's diagnostic log. Where entries end up (system log, Windows
// application event log, standard error, a test's buffer) is decided by the
// sink that the program installs; the default sink writes to standard error.
// Safe to call from any thread.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace brindle::log {

enum class Level { kDebug = 0, kInfo = 1, kWarning = 2, kError = 3 };

using Sink = std::function<void(Level, std::string_view)>;

// Replaces the sink; returns the previous one. An empty sink drops entries.
Sink SetSink(Sink sink);
// Entries below this level are dropped before they reach the sink (default kInfo).
void SetMinimumLevel(Level level);
Level MinimumLevel();
bool Enabled(Level level);

void Write(Level level, std::string_view message);
inline void Debug(std::string_view m) { Write(Level::kDebug, m); }
inline void Info(std::string_view m) { Write(Level::kInfo, m); }
inline void Warning(std::string_view m) { Write(Level::kWarning, m); }
inline void Error(std::string_view m) { Write(Level::kError, m); }

const char* LevelName(Level level);

// Collects entries while it lives (for tests); restores the previous sink after.
class Capture {
 public:
  Capture();
  ~Capture();
  Capture(const Capture&) = delete;
  Capture& operator=(const Capture&) = delete;
  std::string Text() const;  // "LEVEL: message\n" per entry
  bool Contains(std::string_view needle) const;

 private:
  struct State;
  State* state_;
  Sink previous_;
  Level previousLevel_;
};

}  // namespace brindle::log
