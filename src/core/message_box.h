// Message boxes of the program (a port in use, a tunnel error, a missing
// companion or client library). Texts and titles are UTF-8. Every box goes
// through one seam: the program installs the platform's presenter (a
// dialog on Windows; standard error and the system log on POSIX), and tests
// install one that records the boxes instead of blocking.
#pragma once

#include <functional>
#include <vector>
#include <string>
#include <string_view>

namespace brindle {

enum class BoxIcon { kInformation, kExclamation, kCritical };

using MessageBoxSink = std::function<void(std::string_view text, std::string_view title, BoxIcon)>;

// Replaces the presenter; returns the previous one.
MessageBoxSink SetMessageBoxSink(MessageBoxSink sink);
void ShowMessageBox(std::string_view text, std::string_view title, BoxIcon icon);

// The platform's presenter, for the program to install: a dialog on Windows;
// standard error and the system log on POSIX.
MessageBoxSink PlatformMessageBoxPresenter();

// Records the boxes shown while it lives (for tests).
class MessageBoxCapture {
 public:
  struct Box {
    std::string text, title;
    BoxIcon icon;
  };
  MessageBoxCapture();
  ~MessageBoxCapture();
  MessageBoxCapture(const MessageBoxCapture&) = delete;
  MessageBoxCapture& operator=(const MessageBoxCapture&) = delete;
  std::vector<Box> Boxes() const;

 private:
  struct State;
  State* state_;
  MessageBoxSink previous_;
};

}  // namespace brindle
