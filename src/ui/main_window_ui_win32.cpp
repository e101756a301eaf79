#include "ui/main_window_ui_win32.h"

#include <array>

#include "core/language.h"
#include "core/language_wide.h"
#include "ui/options_ids.h"
#include "ui/page_views_win32.h"

namespace brindle::ui {
namespace {

// Each language named in itself, in the order of LanguageMenuItem.
constexpr std::array<const wchar_t*, kLanguageMenuItemCount> kLanguageNames = {
    L"Polski", L"English", L"Deutsch", L"Sloven\u0161\u010dina", L"Fran\u00e7ais", L"Espa\u00f1ol"};

constexpr size_t kAboutTab = kTabCount - 1;

}  // namespace

MainWindowUi::MainWindowUi(HWND window, SettingsApplier& applier, LanguageWindows& windows,
                           LanguageMenu& languages, OptionsWindow& options, TunnelControl* tunnels,
                           MainWindowActions actions)
    : window_(window),
      applier_(applier),
      languages_(languages),
      options_(options),
      tunnels_(tunnels),
      actions_(std::move(actions)),
      registration_(windows, *this) {
  HINSTANCE instance = GetModuleHandleW(nullptr);
  auto child = [&](const wchar_t* type, DWORD style) {
    return CreateWindowExW(0, type, L"", WS_CHILD | WS_VISIBLE | style, 0, 0, 10, 10, window_,
                           nullptr, instance, nullptr);
  };
  recentLabel_ = child(L"STATIC", 0);
  recentBox_ = child(L"EDIT", WS_BORDER | WS_VSCROLL | ES_MULTILINE | ES_READONLY | ES_AUTOVSCROLL);
  countLabel_ = child(L"STATIC", 0);
  countBox_ = child(L"EDIT", WS_BORDER | ES_READONLY);
  HFONT font = static_cast<HFONT>(GetStockObject(DEFAULT_GUI_FONT));
  for (HWND w : {recentLabel_, recentBox_, countLabel_, countBox_})
    SendMessageW(w, WM_SETFONT, reinterpret_cast<WPARAM>(font), FALSE);
  ShowStatus("", 0);
  languages_.CheckCurrent();
  ChangeLanguage();
  Layout();
  SettingsChanged();
}

MainWindowUi::~MainWindowUi() {
  tray_.Remove();
  if (trayMenu_ != nullptr) DestroyMenu(trayMenu_);
  if (IsWindow(window_)) SetMenu(window_, nullptr);
  if (bar_ != nullptr) DestroyMenu(bar_);
}

std::wstring MainWindowUi::Caption(int offset) const {
  return Utf8ToWide(LanguageString(applier_.store(), offset));
}

// Options..., the ROT coder, the two switches and the languages: the same in
// the menu bar and in the tray's menu.
HMENU MainWindowUi::OptionsMenu(bool forTray) {
  const Settings& s = *applier_.store().Current();
  HMENU menu = CreatePopupMenu();
  AppendMenuW(menu, MF_STRING, IDM_OPTIONS, (PlainCaption(LanguageString(s, 3)) + L"...").c_str());
  AppendMenuW(menu, MF_STRING, IDM_ROT, Caption(16).c_str());
  AppendMenuW(menu, MF_STRING | (s.intPreview == 1 ? MF_CHECKED : 0), IDM_PREVIEW,
              Caption(14).c_str());
  AppendMenuW(menu, MF_STRING | (s.intISO == 1 ? MF_CHECKED : 0), IDM_ISO, L"&ISO-8859-2");
  HMENU languages = CreatePopupMenu();
  for (int i = 0; i < kLanguageMenuItemCount; ++i) {
    const bool checked = languages_.Checked(static_cast<LanguageMenuItem>(i));
    AppendMenuW(languages, MF_STRING | (checked ? MF_CHECKED : 0), IDM_LANG_FIRST + i,
                kLanguageNames[i]);
  }
  AppendMenuW(menu, MF_POPUP, reinterpret_cast<UINT_PTR>(languages), Caption(20).c_str());
  if (forTray) {
    AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
    AppendMenuW(menu, MF_STRING, IDM_MAIN_WINDOW, Caption(135).c_str());
    AppendMenuW(menu, MF_STRING, IDM_ABOUT, Caption(134).c_str());
    AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
    AppendMenuW(menu, MF_STRING, IDM_END, Caption(2).c_str());
  }
  return menu;
}

void MainWindowUi::BuildMenus() {
  HMENU old = bar_;
  bar_ = CreateMenu();
  HMENU file = CreatePopupMenu();
  AppendMenuW(file, MF_STRING, IDM_END, Caption(2).c_str());
  AppendMenuW(bar_, MF_POPUP, reinterpret_cast<UINT_PTR>(file), Caption(1).c_str());
  AppendMenuW(bar_, MF_POPUP, reinterpret_cast<UINT_PTR>(OptionsMenu(false)), Caption(3).c_str());
  HMENU help = CreatePopupMenu();
  AppendMenuW(help, MF_STRING, IDM_HELP, Caption(136).c_str());
  AppendMenuW(help, MF_STRING, IDM_ABOUT, Caption(134).c_str());
  AppendMenuW(help, MF_STRING, IDM_MAIN_WINDOW, Caption(135).c_str());
  AppendMenuW(bar_, MF_POPUP, reinterpret_cast<UINT_PTR>(help), Caption(21).c_str());
  SetMenu(window_, bar_);
  if (old != nullptr) DestroyMenu(old);
  if (trayMenu_ != nullptr) DestroyMenu(trayMenu_);
  trayMenu_ = OptionsMenu(true);
}

void MainWindowUi::ChangeLanguage() {
  BuildMenus();
  SetWindowTextW(recentLabel_, Caption(22).c_str());
  SetWindowTextW(countLabel_, Caption(23).c_str());
}

void MainWindowUi::SettingsChanged() {
  BuildMenus();
  if (applier_.store().Current()->intTrayIcon == 1) {
    if (!tray_.Shown()) tray_.Add(window_, L"OE Brindle");
    UpdateTip();
  } else {
    tray_.Remove();
  }
}

void MainWindowUi::UpdateTip() {
  if (!tray_.Shown() || tunnels_ == nullptr) return;
  tunnels_->Running([this, settings = applier_.store().Current()](std::vector<bool> running) {
    std::string tip = "OE Brindle";
    for (size_t i = 0; i < running.size() && i < settings->tunnels.size(); ++i) {
      if (!running[i]) continue;
      const TunnelRecord& t = settings->tunnels[i];
      tip += "\n" + std::to_string(t.SrcPort) + " > " + t.Server + ":" + std::to_string(t.DestPort);
    }
    tray_.SetTip(Utf8ToWide(tip));
  });
}

void MainWindowUi::ShowStatus(const std::string& recent, size_t connections) {
  // The recent piece is message text in the system's code page.
  SetWindowTextA(recentBox_, recent.c_str());
  SetWindowTextW(countBox_, std::to_wstring(connections).c_str());
}

void MainWindowUi::Layout() {
  RECT r;
  GetClientRect(window_, &r);
  const int w = std::max<int>(r.right - 16, 40), h = std::max<int>(r.bottom - 80, 20);
  MoveWindow(recentLabel_, 8, 8, w, 16, TRUE);
  MoveWindow(recentBox_, 8, 26, w, h, TRUE);
  MoveWindow(countLabel_, 8, 34 + h, w - 60, 16, TRUE);
  MoveWindow(countBox_, r.right - 68, 32 + h, 60, 20, TRUE);
}

void MainWindowUi::Toggle(int16_t Settings::*flag) {
  Settings next = *applier_.store().Current();
  next.*flag = next.*flag == 1 ? 0 : 1;
  applier_.Apply(std::move(next));
  BuildMenus();
}

void MainWindowUi::Command(UINT id) {
  if (id >= IDM_LANG_FIRST && id < IDM_LANG_FIRST + kLanguageMenuItemCount) {
    languages_.Click(static_cast<LanguageMenuItem>(id - IDM_LANG_FIRST));
    return;
  }
  switch (id) {
    case IDM_END:
      if (actions_.end) actions_.end();
      break;
    case IDM_OPTIONS:
      options_.Open(window_);
      break;
    case IDM_ABOUT:
      options_.Open(window_, kAboutTab);
      break;
    case IDM_ROT:
      if (actions_.rotCoder) actions_.rotCoder();
      break;
    case IDM_PREVIEW:
      Toggle(&Settings::intPreview);
      break;
    case IDM_ISO:
      Toggle(&Settings::intISO);
      break;
    case IDM_HELP:
      if (actions_.help) actions_.help();
      break;
    case IDM_MAIN_WINDOW:
      ShowWindow(window_, SW_SHOWNORMAL);
      SetForegroundWindow(window_);
      break;
  }
}

void MainWindowUi::TrayEvent(UINT mouse) {
  switch (mouse) {
    case WM_RBUTTONUP: {
      BuildMenus();
      POINT at;
      GetCursorPos(&at);
      SetForegroundWindow(window_);  // so that the menu closes when clicked elsewhere
      const UINT id = TrackPopupMenu(trayMenu_, TPM_RETURNCMD | TPM_RIGHTBUTTON, at.x, at.y, 0,
                                     window_, nullptr);
      PostMessageW(window_, WM_NULL, 0, 0);
      if (id != 0) Command(id);
      break;
    }
    case WM_LBUTTONDBLCLK:
      if (applier_.store().Current()->intTrayDoubleClick == 1)
        Command(IDM_MAIN_WINDOW);
      else if (actions_.showClient)
        actions_.showClient();
      break;
    case WM_MOUSEMOVE:
      UpdateTip();
      break;
  }
}

bool MainWindowUi::Handle(UINT message, WPARAM w, LPARAM l) {
  switch (message) {
    case WM_COMMAND:
      if (HIWORD(w) != 0 || l != 0) return false;  // a control's notification
      Command(LOWORD(w));
      return true;
    case kTrayCallback:
      TrayEvent(static_cast<UINT>(l));
      return true;
    case WM_SIZE:
      Layout();
      return false;
  }
  return false;
}

}  // namespace brindle::ui
