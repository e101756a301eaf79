// The program's icon in the notification area. Its messages come to the
// main window as kTrayCallback with the mouse message in lParam.
#pragma once

#include <windows.h>
// after windows.h
#include <shellapi.h>

#include <string>

namespace brindle::ui {

inline constexpr UINT kTrayCallback = WM_APP + 20;

class TrayIcon {
 public:
  ~TrayIcon() { Remove(); }
  // Shows the icon with `tip` (cut to what the system keeps); false when the
  // shell refuses.
  bool Add(HWND owner, const std::wstring& tip);
  void SetTip(const std::wstring& tip);
  void Remove();
  bool Shown() const { return owner_ != nullptr; }

 private:
  NOTIFYICONDATAW Data(UINT flags, const std::wstring& tip) const;
  HWND owner_ = nullptr;
};

}  // namespace brindle::ui
