#include "ui/options_window_win32.h"

#include <commctrl.h>

#include "core/language.h"
#include "core/language_wide.h"
#include "core/message_box.h"
#include "ui/options_ids.h"
#include "ui/page_views_win32.h"

namespace brindle::ui {

OptionsWindow::OptionsWindow(SettingsApplier& applier, LanguageWindows& windows,
                             TunnelControl* tunnels)
    : applier_(applier), windows_(windows), pages_(tunnels) {}

OptionsWindow::~OptionsWindow() {
  Close();
}

bool OptionsWindow::Open(HWND owner, size_t tab) {
  if (window_ == nullptr) {
    INITCOMMONCONTROLSEX controls{sizeof controls, ICC_TAB_CLASSES};
    InitCommonControlsEx(&controls);
    pages_.Load(applier_.store().Current());
    window_ = CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_OPTIONS), owner,
                                 &OptionsWindow::Procedure, reinterpret_cast<LPARAM>(this));
    if (window_ == nullptr) return false;
    Init();
    windows_.Register(*this);
  }
  SelectTab(tab);
  ShowWindow(window_, SW_SHOW);
  SetForegroundWindow(window_);
  return true;
}

void OptionsWindow::Init() {
  views_ = MakePageViews(pages_, applier_.store());
  HWND tabs = GetDlgItem(window_, IDC_TABS);
  for (size_t i = 0; i < views_.size(); ++i) {
    TCITEMW item{};
    item.mask = TCIF_TEXT;
    item.pszText = const_cast<wchar_t*>(L"");
    SendMessageW(tabs, TCM_INSERTITEMW, i, reinterpret_cast<LPARAM>(&item));
  }
  RECT area;
  GetWindowRect(tabs, &area);
  MapWindowPoints(nullptr, window_, reinterpret_cast<POINT*>(&area), 2);
  SendMessageW(tabs, TCM_ADJUSTRECT, FALSE, reinterpret_cast<LPARAM>(&area));
  for (auto& view : views_) {
    view->Create(window_);
    SetWindowPos(view->Handle(), HWND_TOP, area.left, area.top, area.right - area.left,
                 area.bottom - area.top, SWP_HIDEWINDOW);
    view->Show();
  }
  ChangeLanguage();
  pages_.frmTunele.Refresh([this] {
    if (window_ != nullptr) views_[4]->Show();
  });
}

void OptionsWindow::SelectTab(size_t tab) {
  if (window_ == nullptr || tab >= views_.size()) return;
  current_ = tab;
  TabCtrl_SetCurSel(GetDlgItem(window_, IDC_TABS), static_cast<int>(tab));
  for (size_t i = 0; i < views_.size(); ++i)
    ShowWindow(views_[i]->Handle(), i == tab ? SW_SHOW : SW_HIDE);
}

void OptionsWindow::ChangeLanguage() {
  if (window_ == nullptr) return;
  const SettingsStore& store = applier_.store();
  SetWindowTextW(window_, (L"OE Brindle - " + PlainCaption(LanguageString(store, 3))).c_str());
  SetDlgItemTextW(window_, IDOK, Utf8ToWide(LanguageString(store, 31)).c_str());
  SetDlgItemTextW(window_, IDCANCEL, Utf8ToWide(LanguageString(store, 32)).c_str());
  SetDlgItemTextW(window_, IDC_APPLY, Utf8ToWide(LanguageString(store, 39)).c_str());
  HWND tabs = GetDlgItem(window_, IDC_TABS);
  for (size_t i = 0; i < views_.size(); ++i) {
    std::wstring caption = PlainCaption(LanguageString(store, kTabCaptions[i]));
    TCITEMW item{};
    item.mask = TCIF_TEXT;
    item.pszText = caption.data();
    SendMessageW(tabs, TCM_SETITEMW, i, reinterpret_cast<LPARAM>(&item));
    views_[i]->ChangeLanguage();
  }
}

bool OptionsWindow::ApplyPages() {
  for (auto& view : views_) view->Collect();
  if (auto refusal = pages_.Apply(applier_, [this] {
        pages_.frmTunele.Refresh([this] {
          if (window_ != nullptr) views_[4]->Show();
        });
      })) {
    const Settings& s = *applier_.store().Current();
    ShowMessageBox(std::string(LanguageString(s, refusal->second.text)) + refusal->second.detail,
                   MessageBoxTitle(s, refusal->second.title), BoxIcon::kExclamation);
    auto pages = pages_.Pages();
    for (size_t i = 0; i < pages.size(); ++i)
      if (pages[i] == refusal->first) SelectTab(i);
    return false;
  }
  for (auto& view : views_) view->Show();
  if (onApplied) onApplied();
  return true;
}

void OptionsWindow::Close() {
  if (window_ == nullptr) return;
  windows_.Unregister(*this);
  views_.clear();
  HWND w = window_;
  window_ = nullptr;
  DestroyWindow(w);
}

INT_PTR CALLBACK OptionsWindow::Procedure(HWND window, UINT message, WPARAM w, LPARAM l) {
  if (message == WM_INITDIALOG) {
    SetWindowLongPtrW(window, DWLP_USER, l);
    return TRUE;
  }
  auto* self = reinterpret_cast<OptionsWindow*>(GetWindowLongPtrW(window, DWLP_USER));
  if (self == nullptr || self->window_ != window) return FALSE;
  return self->Handle(message, w, l);
}

INT_PTR OptionsWindow::Handle(UINT message, WPARAM w, LPARAM l) {
  switch (message) {
    case WM_NOTIFY: {
      const auto* header = reinterpret_cast<const NMHDR*>(l);
      if (header->idFrom == IDC_TABS && header->code == TCN_SELCHANGE)
        SelectTab(static_cast<size_t>(TabCtrl_GetCurSel(header->hwndFrom)));
      return TRUE;
    }
    case WM_COMMAND:
      switch (LOWORD(w)) {
        case IDOK:
          if (ApplyPages()) Close();
          return TRUE;
        case IDC_APPLY:
          ApplyPages();
          return TRUE;
        case IDCANCEL:
          Close();
          return TRUE;
      }
      return FALSE;
    case WM_CLOSE:
      Close();
      return TRUE;
  }
  return FALSE;
}

}  // namespace brindle::ui
