#include "ui/page_view_win32.h"

#include "core/language.h"
#include "core/language_wide.h"
#include "core/message_box.h"

namespace brindle::ui {

PageView::~PageView() {
  if (window_ != nullptr) DestroyWindow(window_);
}

bool PageView::Create(HWND parent) {
  window_ = CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(templateId_), parent,
                               &PageView::Procedure, reinterpret_cast<LPARAM>(this));
  return window_ != nullptr;
}

INT_PTR CALLBACK PageView::Procedure(HWND window, UINT message, WPARAM w, LPARAM l) {
  if (message == WM_INITDIALOG) {
    SetWindowLongPtrW(window, DWLP_USER, l);
    return FALSE;
  }
  auto* self = reinterpret_cast<PageView*>(GetWindowLongPtrW(window, DWLP_USER));
  if (self == nullptr) return FALSE;
  switch (message) {
    case WM_COMMAND:
      if (!self->showing_) self->Command(LOWORD(w), HIWORD(w));
      return TRUE;
    case WM_VSCROLL:
      self->Scroll(reinterpret_cast<HWND>(l), LOWORD(w));
      return TRUE;
    case WM_NCDESTROY:
      self->window_ = nullptr;
      return FALSE;
  }
  return FALSE;
}

std::string_view PageView::Text(int offset) const {
  return LanguageString(store_, offset);
}

void PageView::Caption(int id, int offset) const {
  SetDlgItemTextW(window_, id, Utf8ToWide(Text(offset)).c_str());
}

void PageView::Caption(int id, const std::string& utf8) const {
  SetDlgItemTextW(window_, id, Utf8ToWide(utf8).c_str());
}

void PageView::SetText(int id, const std::string& bytes) const {
  SetDlgItemTextA(window_, id, bytes.c_str());
}

std::string PageView::GetText(int id) const {
  HWND control = GetDlgItem(window_, id);
  std::string text(static_cast<size_t>(GetWindowTextLengthA(control)) + 1, '\0');
  text.resize(
      static_cast<size_t>(GetWindowTextA(control, text.data(), static_cast<int>(text.size()))));
  return text;
}

void PageView::SetCheck(int id, bool on) const {
  CheckDlgButton(window_, id, on ? BST_CHECKED : BST_UNCHECKED);
}

bool PageView::GetCheck(int id) const {
  return IsDlgButtonChecked(window_, id) == BST_CHECKED;
}

void PageView::Box(int textOffset, int titleOffset, const std::string& detail) const {
  const Settings& s = *store_.Current();
  ShowMessageBox(std::string(LanguageString(s, textOffset)) + detail,
                 MessageBoxTitle(s, titleOffset), BoxIcon::kExclamation);
}

void BoundPageView::Show() {
  showing_ = true;
  for (auto [id, field] : b_.checks) SetCheck(id, *field);
  for (auto [id, field] : b_.texts) SetText(id, *field);
  if (b_.show) b_.show();
  showing_ = false;
}

void BoundPageView::Collect() {
  for (auto [id, field] : b_.checks) *field = GetCheck(id);
  for (auto [id, field] : b_.texts) *field = GetText(id);
  if (b_.collect) b_.collect();
}

void BoundPageView::ChangeLanguage() {
  for (auto [id, offset] : b_.captions) Caption(id, offset);
  if (b_.language) b_.language();
}

int BoundPageView::Selected(std::initializer_list<int> ids) const {
  for (int id : ids)
    if (GetCheck(id)) return id;
  return 0;
}

void BoundPageView::Select(std::initializer_list<int> ids, int id) const {
  for (int each : ids) SetCheck(each, each == id);
}

std::wstring PlainCaption(std::string_view text) {
  std::string plain;
  for (char c : text)
    if (c != '&') plain += c;
  while (!plain.empty() && (plain.back() == '.' || plain.back() == ' ')) plain.pop_back();
  return Utf8ToWide(plain);
}

}  // namespace brindle::ui
