// What the hidden main window shows and offers: its menus (End, Options,
// the ROT coder, the Preview and ISO switches, Language, Help), the boxes
// "Recently transferred data:" and "Current connections:", and the tray
// icon with the same menu. The window's procedure hands its messages here
// first. Everything runs on the window's thread; the boxes are fed by
// posting from the proxy's thread.
#pragma once

#include <windows.h>

#include <functional>
#include <string>

#include "core/language_menu.h"
#include "ui/options_window_win32.h"
#include "ui/settings_apply.h"
#include "ui/tray_icon_win32.h"

namespace brindle::ui {

struct MainWindowActions {
  std::function<void()> end;         // File > End: the program closes
  std::function<void()> rotCoder;    // the ROT coder window
  std::function<void()> showClient;  // a tray double click, unless it opens the main window
  std::function<void()> help;        // Help > Contents
};

class MainWindowUi : public LanguageAware {
 public:
  // `tunnels` (may be null) names the running tunnels in the tray's tip.
  MainWindowUi(HWND window, SettingsApplier& applier, LanguageWindows& windows,
               LanguageMenu& languages, OptionsWindow& options, TunnelControl* tunnels,
               MainWindowActions actions);
  ~MainWindowUi();
  MainWindowUi(const MainWindowUi&) = delete;
  MainWindowUi& operator=(const MainWindowUi&) = delete;

  // True when the message was the UI's (a menu command, the tray's
  // callback, a resize of the boxes).
  bool Handle(UINT message, WPARAM w, LPARAM l);

  // New contents of the two boxes.
  void ShowStatus(const std::string& recent, size_t connections);
  // Settings were applied: check marks and the tray icon follow them.
  void SettingsChanged();
  void ChangeLanguage() override;

  HMENU MenuBar() const { return bar_; }
  // The tray's menu as the last right click built it (null before).
  HMENU TrayMenu() const { return trayMenu_; }
  const TrayIcon& Tray() const { return tray_; }
  void UpdateTip();

 private:
  void BuildMenus();
  HMENU OptionsMenu(bool forTray);
  void Command(UINT id);
  void TrayEvent(UINT mouse);
  void Toggle(int16_t Settings::*flag);
  void Layout();
  std::wstring Caption(int offset) const;

  HWND window_;
  SettingsApplier& applier_;
  LanguageMenu& languages_;
  OptionsWindow& options_;
  TunnelControl* tunnels_;
  MainWindowActions actions_;
  LanguageRegistration registration_;
  HMENU bar_ = nullptr;
  HMENU trayMenu_ = nullptr;
  HWND recentLabel_, recentBox_, countLabel_, countBox_;
  TrayIcon tray_;
};

}  // namespace brindle::ui
