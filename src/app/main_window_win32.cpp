#include "app/main_window_win32.h"

#include <memory>

#include "app/entry_procedure.h"
#include "app/query_unload.h"
#include "oewin/rot_shortcut.h"

namespace brindle::app {
namespace {

constexpr UINT kRunPosted = WM_APP + 1;

bool RegisterClassOnce() {
  static const bool registered = [] {
    WNDCLASSA type{};
    type.lpfnWndProc = DefWindowProcA;  // replaced per window in Create
    type.hInstance = GetModuleHandleA(nullptr);
    type.lpszClassName = kMainFormClass;
    return RegisterClassA(&type) != 0;
  }();
  return registered;
}

}  // namespace

MainWindow::~MainWindow() {
  if (window_ != nullptr) {
    closing_ = true;
    DestroyWindow(window_);
  }
}

bool MainWindow::Create() {
  if (!RegisterClassOnce()) return false;
  window_ = CreateWindowExA(0, kMainFormClass, kMainFormCaption, WS_OVERLAPPEDWINDOW, CW_USEDEFAULT,
                            CW_USEDEFAULT, 320, 240, nullptr, nullptr, GetModuleHandleA(nullptr),
                            nullptr);
  if (window_ == nullptr) return false;
  SetWindowLongPtrA(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  SetWindowLongPtrA(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&MainWindow::Procedure));
  return true;
}

bool MainWindow::Post(std::function<void()> work) {
  auto* posted = new std::function<void()>(std::move(work));
  if (window_ != nullptr && PostMessageA(window_, kRunPosted, 0, reinterpret_cast<LPARAM>(posted)))
    return true;
  delete posted;
  return false;
}

void MainWindow::PumpUntil(const bool& done) {
  MSG message;
  while (!done && GetMessageA(&message, nullptr, 0, 0) > 0) {
    TranslateMessage(&message);
    DispatchMessageA(&message);
  }
}

LRESULT CALLBACK MainWindow::Procedure(HWND window, UINT message, WPARAM w, LPARAM l) {
  auto* self = reinterpret_cast<MainWindow*>(GetWindowLongPtrA(window, GWLP_USERDATA));
  if (self == nullptr) return DefWindowProcA(window, message, w, l);
  return self->Handle(window, message, w, l);
}

LRESULT MainWindow::Handle(HWND window, UINT message, WPARAM w, LPARAM l) {
  if (message != kRunPosted && handler_ && handler_(message, w, l)) return 0;
  switch (message) {
    case kRunPosted: {
      std::unique_ptr<std::function<void()>> work(reinterpret_cast<std::function<void()>*>(l));
      (*work)();
      return 0;
    }
    case WM_SYSCOMMAND:
      if ((w & 0xFFF0) == SC_CLOSE) {
        if (Form_QueryUnload(UnloadMode::kFormControlMenu, closing_).hide)
          ShowWindow(window, SW_HIDE);
        return 0;
      }
      break;
    case WM_QUERYENDSESSION:
      Form_QueryUnload(UnloadMode::kAppWindows, closing_);
      return TRUE;
    case WM_CLOSE:
      if (!Form_QueryUnload(UnloadMode::kFormCode, closing_).cancel) {
        DestroyWindow(window);
      }
      return 0;
    case WM_NCDESTROY:
      window_ = nullptr;
      break;
  }
  if (message == brindle::RotShortcutMessage()) {  // Shift+F12 in the client
    brindle::OnRotShortcut(window);
    return 0;
  }
  return DefWindowProcA(window, message, w, l);
}

}  // namespace brindle::app
