// The hidden main form's window: class "ThunderRT6FormDC", caption "OE
// Brindle", so that a second start finds it. It follows the close rule of
// Form_QueryUnload, and it is how the proxy's thread reaches the client's
// thread: a closure posted to it runs in its window procedure.
#pragma once

#include <windows.h>

#include <functional>

namespace brindle::app {

class MainWindow {
 public:
  MainWindow() = default;
  ~MainWindow();
  MainWindow(const MainWindow&) = delete;
  MainWindow& operator=(const MainWindow&) = delete;

  // Creates the window, hidden. False when the system refuses.
  bool Create();
  HWND Handle() const { return window_; }
  bool Closing() const { return closing_; }

  // Runs `work` on the window's thread; safe from any thread. False when the
  // window is gone (the work is dropped).
  bool Post(std::function<void()> work);

  // Sees every message first (menus, tray, boxes); true when it handled one.
  using Handler = std::function<bool(UINT message, WPARAM w, LPARAM l)>;
  void SetHandler(Handler handler) { handler_ = std::move(handler); }

  // Runs the thread's message loop until `done` is true (set by posted work).
  void PumpUntil(const bool& done);

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM w, LPARAM l);
  LRESULT Handle(HWND window, UINT message, WPARAM w, LPARAM l);

  HWND window_ = nullptr;
  bool closing_ = false;
  Handler handler_;
};

}  // namespace brindle::app
