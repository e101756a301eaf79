#include "core/log.h"

#include <atomic>
#include <cstdio>
#include <mutex>

namespace brindle::log {
namespace {

std::mutex& SinkMutex() {
  static std::mutex m;
  return m;
}

void StderrSink(Level level, std::string_view message) {
  std::fprintf(stderr, "OE Brindle: %s: %.*s\n", LevelName(level), static_cast<int>(message.size()),
               message.data());
}

Sink& CurrentSink() {
  static Sink sink = StderrSink;
  return sink;
}

std::atomic<int> g_minimum{static_cast<int>(Level::kInfo)};

}  // namespace

const char* LevelName(Level level) {
  switch (level) {
    case Level::kDebug: return "debug";
    case Level::kInfo: return "info";
    case Level::kWarning: return "warning";
    case Level::kError: return "error";
  }
  return "?";
}

Sink SetSink(Sink sink) {
  std::lock_guard lock(SinkMutex());
  Sink old = std::move(CurrentSink());
  CurrentSink() = std::move(sink);
  return old;
}

void SetMinimumLevel(Level level) { g_minimum = static_cast<int>(level); }
Level MinimumLevel() { return static_cast<Level>(g_minimum.load()); }
bool Enabled(Level level) { return static_cast<int>(level) >= g_minimum.load(); }

void Write(Level level, std::string_view message) {
  if (!Enabled(level)) return;
  std::lock_guard lock(SinkMutex());
  if (CurrentSink()) CurrentSink()(level, message);
}

struct Capture::State {
  mutable std::mutex m;
  std::string text;
};

Capture::Capture() : state_(new State) {
  previousLevel_ = MinimumLevel();
  SetMinimumLevel(Level::kDebug);
  State* s = state_;
  previous_ = SetSink([s](Level level, std::string_view message) {
    std::lock_guard lock(s->m);
    s->text.append(LevelName(level)).append(": ").append(message).append("\n");
  });
}

Capture::~Capture() {
  SetSink(std::move(previous_));
  SetMinimumLevel(previousLevel_);
  delete state_;
}

std::string Capture::Text() const {
  std::lock_guard lock(state_->m);
  return state_->text;
}

bool Capture::Contains(std::string_view needle) const {
  return Text().find(needle) != std::string::npos;
}

}  // namespace brindle::log
