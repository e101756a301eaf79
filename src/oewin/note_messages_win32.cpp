#include "oewin/note_messages_win32.h"

namespace brindle {
namespace {

constexpr WPARAM kEndKey = VK_END;     // 35
constexpr WPARAM kSemicolonKey = 186;  // VK_OEM_1

// Lets the client handle what the last write started before the next key.
void YieldToPendingEvents() {
  MSG m;
  while (PeekMessageA(&m, nullptr, 0, 0, PM_REMOVE)) {
    TranslateMessage(&m);
    DispatchMessageA(&m);
  }
}

void PressKey(HWND field, WPARAM key) {
  YieldToPendingEvents();
  SendMessageA(field, WM_IME_KEYDOWN, key, 0);
}

void SetText(HWND field, std::string_view value) {
  const std::string text(value);
  SendMessageA(field, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
}

}  // namespace

HWND FindEnvelope(HWND note) {
  HWND direct = FindWindowExA(note, nullptr, "OE_Envelope", nullptr);
  if (direct != nullptr) return direct;
  // Some versions nest the envelope one level deeper.
  for (HWND child = GetWindow(note, GW_CHILD); child != nullptr;
       child = GetWindow(child, GW_HWNDNEXT))
    if (HWND inner = FindWindowExA(child, nullptr, "OE_Envelope", nullptr)) return inner;
  return nullptr;
}

bool IsNewsNote(HWND note) {
  HWND groups = GetDlgItem(FindEnvelope(note), kNewsgroupsItem);
  return groups != nullptr && IsWindowVisible(groups);
}

std::string CNewsMsg::Read(int item) {
  HWND field = GetDlgItem(envelope_, item);
  if (field == nullptr) return {};
  const LRESULT length = SendMessageA(field, WM_GETTEXTLENGTH, 0, 0);
  std::string text(static_cast<size_t>(length) + 1, '\0');
  const LRESULT got =
      SendMessageA(field, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
  text.resize(static_cast<size_t>(got));
  return text;
}

void CNewsMsg::Write(int item, std::string_view value) {
  if (HWND field = GetDlgItem(envelope_, item)) SetText(field, value);
}

std::string CMailMsg::Subject() {
  if (!subject_) {
    char buffer[1024] = {};
    if (HWND field = GetDlgItem(envelope_, kSubjectItem))
      SendMessageA(field, WM_GETTEXT, sizeof buffer, reinterpret_cast<LPARAM>(buffer));
    subject_ = buffer;
  }
  return *subject_;
}

void CMailMsg::SetSubject(std::string_view v) {
  if (HWND field = GetDlgItem(envelope_, kSubjectItem)) SetText(field, v);
}

void CMailMsg::SetCC(std::string_view v) {
  HWND field = GetDlgItem(envelope_, kCCItem);
  if (field == nullptr) return;
  SetText(field, v);
  if (v.empty()) return;
  PressKey(field, kEndKey);
  PressKey(field, kSemicolonKey);
}

void CMailMsg::SetBCC(std::string_view v) {
  HWND field = GetDlgItem(envelope_, kBCCItem);
  if (field == nullptr) return;
  SetText(field, v);
  if (v.empty()) return;
  // A hidden Bcc field takes no caret: only the separator that ends the entry.
  if (IsWindowVisible(field)) PressKey(field, kEndKey);
  PressKey(field, kSemicolonKey);
}

}  // namespace brindle
