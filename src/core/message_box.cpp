#include "core/message_box.h"

#include <mutex>
#include <string>

#include "core/log.h"

namespace brindle {
namespace {

std::mutex& BoxMutex() {
  static std::mutex m;
  return m;
}

// Until the program installs its presenter, a box is at least not lost.
void LogBox(std::string_view text, std::string_view title, BoxIcon icon) {
  std::string entry(title);
  entry.append(": ").append(text);
  log::Write(icon == BoxIcon::kInformation ? log::Level::kInfo : log::Level::kError, entry);
}

MessageBoxSink& CurrentSink() {
  static MessageBoxSink sink = LogBox;
  return sink;
}

}  // namespace

MessageBoxSink SetMessageBoxSink(MessageBoxSink sink) {
  std::lock_guard lock(BoxMutex());
  MessageBoxSink old = std::move(CurrentSink());
  CurrentSink() = std::move(sink);
  return old;
}

void ShowMessageBox(std::string_view text, std::string_view title, BoxIcon icon) {
  MessageBoxSink sink;
  {
    std::lock_guard lock(BoxMutex());
    sink = CurrentSink();
  }
  if (sink) sink(text, title, icon);  // outside the lock: a dialog may run a message loop
}

struct MessageBoxCapture::State {
  mutable std::mutex m;
  std::vector<Box> boxes;
};

MessageBoxCapture::MessageBoxCapture() : state_(new State) {
  State* s = state_;
  previous_ = SetMessageBoxSink([s](std::string_view text, std::string_view title, BoxIcon icon) {
    std::lock_guard lock(s->m);
    s->boxes.push_back({std::string(text), std::string(title), icon});
  });
}

MessageBoxCapture::~MessageBoxCapture() {
  SetMessageBoxSink(std::move(previous_));
  delete state_;
}

std::vector<MessageBoxCapture::Box> MessageBoxCapture::Boxes() const {
  std::lock_guard lock(state_->m);
  return state_->boxes;
}

}  // namespace brindle
