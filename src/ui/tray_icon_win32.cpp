#include "ui/tray_icon_win32.h"

#include <shellapi.h>

#include <algorithm>

namespace brindle::ui {

NOTIFYICONDATAW TrayIcon::Data(UINT flags, const std::wstring& tip) const {
  NOTIFYICONDATAW data{};
  data.cbSize = sizeof data;
  data.hWnd = owner_;
  data.uID = 1;
  data.uFlags = flags;
  data.uCallbackMessage = kTrayCallback;
  data.hIcon = LoadIconW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(1));
  if (data.hIcon == nullptr) data.hIcon = LoadIconW(nullptr, MAKEINTRESOURCEW(32512));
  const size_t n = std::min(tip.size(), std::size(data.szTip) - 1);
  std::copy_n(tip.begin(), n, data.szTip);
  return data;
}

bool TrayIcon::Add(HWND owner, const std::wstring& tip) {
  if (owner_ != nullptr) return true;
  owner_ = owner;
  NOTIFYICONDATAW data = Data(NIF_MESSAGE | NIF_ICON | NIF_TIP, tip);
  if (Shell_NotifyIconW(NIM_ADD, &data)) return true;
  owner_ = nullptr;
  return false;
}

void TrayIcon::SetTip(const std::wstring& tip) {
  if (owner_ == nullptr) return;
  NOTIFYICONDATAW data = Data(NIF_TIP, tip);
  Shell_NotifyIconW(NIM_MODIFY, &data);
}

void TrayIcon::Remove() {
  if (owner_ == nullptr) return;
  NOTIFYICONDATAW data = Data(0, L"");
  Shell_NotifyIconW(NIM_DELETE, &data);
  owner_ = nullptr;
}

}  // namespace brindle::ui
