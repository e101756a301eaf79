// The options window: one tab per option page, OK / Cancel / Apply. It
// loads every page from the current settings when it opens; OK and Apply go
// through the one apply path; Cancel (or closing it) drops the pages, so
// nothing changes. Its captions follow the language menu.
#pragma once

#include <windows.h>

#include <functional>
#include <memory>
#include <vector>

#include "core/language_menu.h"
#include "ui/option_pages.h"
#include "ui/page_view_win32.h"

namespace brindle::ui {

class OptionsWindow : public LanguageAware {
 public:
  OptionsWindow(SettingsApplier& applier, LanguageWindows& windows,
                TunnelControl* tunnels = nullptr);
  ~OptionsWindow();
  OptionsWindow(const OptionsWindow&) = delete;
  OptionsWindow& operator=(const OptionsWindow&) = delete;

  // Opens the window (or brings the open one forward) on `tab`.
  bool Open(HWND owner, size_t tab = 0);
  HWND Handle() const { return window_; }
  void SelectTab(size_t tab);
  size_t CurrentTab() const { return current_; }
  PageView* Page(size_t tab) { return tab < views_.size() ? views_[tab].get() : nullptr; }
  OptionPages& Pages() { return pages_; }

  void ChangeLanguage() override;

  // Runs after every successful OK or Apply.
  std::function<void()> onApplied;

 private:
  static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM w, LPARAM l);
  INT_PTR Handle(UINT message, WPARAM w, LPARAM l);
  void Init();
  bool ApplyPages();
  void Close();

  SettingsApplier& applier_;
  LanguageWindows& windows_;
  OptionPages pages_;
  std::vector<std::unique_ptr<PageView>> views_;
  HWND window_ = nullptr;
  size_t current_ = 0;
};

}  // namespace brindle::ui
