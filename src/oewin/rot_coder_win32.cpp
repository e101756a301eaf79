#include "oewin/rot_coder.h"

#include <string>

#include "core/language.h"
#include "core/language_wide.h"
#include "oewin/editor_text.h"
#include "oewin/note_settings.h"
#include "oewin/rot_coder_ids.h"
#include "oewin/rot_coder_model.h"

namespace brindle {
namespace {

// Language strings of the window.
constexpr int kTitle = 67, kRotate = 68, kPositions = 69, kCode = 70, kReplace = 71, kCancel = 32;

HWND g_coder = nullptr;  // the one open coder window

// Message texts are bytes of the system code page: the "A" calls keep them so.
std::string ItemText(HWND dialog, int item) {
  HWND control = GetDlgItem(dialog, item);
  std::string text(static_cast<size_t>(GetWindowTextLengthA(control)) + 1, '\0');
  text.resize(static_cast<size_t>(GetWindowTextA(control, text.data(), int(text.size()))));
  return text;
}

void SetItemText(HWND dialog, int item, const std::string& text) {
  SetDlgItemTextA(dialog, item, NormaliseLineEnds(text).c_str());
}

void LoadCaptions(HWND dialog) {
  const int16_t base = NoteSettings()->intLanguage;
  const std::string title =
      std::string(kMessageBoxTitlePrefix) + std::string(LanguageString(base, kTitle));
  SetWindowTextW(dialog, Utf8ToWide(title).c_str());
  const struct {
    int item, offset;
  } captions[] = {{IDC_ROT_LABEL1, kRotate},
                  {IDC_ROT_LABEL2, kPositions},
                  {IDC_ROT_CMDOK, kCode},
                  {IDC_ROT_CMDREPLACE, kReplace},
                  {IDC_ROT_CMDCANCEL, kCancel}};
  for (const auto& c : captions)
    SetDlgItemTextW(dialog, c.item, Utf8ToWide(LanguageString(base, c.offset)).c_str());
}

INT_PTR CALLBACK RotCoderProc(HWND dialog, UINT message, WPARAM w, LPARAM) {
  switch (message) {
    case WM_INITDIALOG:
      // No length limit on the texts: a whole article may be coded.
      for (int item : {IDC_ROT_TEXT1, IDC_ROT_TEXT2})
        SendDlgItemMessageA(dialog, item, EM_LIMITTEXT, 0, 0);
      SetDlgItemTextA(dialog, IDC_ROT_TXTILE, "13");
      LoadCaptions(dialog);
      return TRUE;
    case WM_COMMAND:
      switch (LOWORD(w)) {
        case IDC_ROT_CMDOK:
          SetItemText(dialog, IDC_ROT_TEXT2,
                      RotCode(ItemText(dialog, IDC_ROT_TEXT1), ItemText(dialog, IDC_ROT_TXTILE)));
          return TRUE;
        case IDC_ROT_CMDREPLACE:
          if (const auto result = RotReplace(ProgramRotSelection(), ItemText(dialog, IDC_ROT_TEXT1),
                                             ItemText(dialog, IDC_ROT_TXTILE)))
            SetItemText(dialog, IDC_ROT_TEXT2, *result);
          return TRUE;
        case IDC_ROT_CMDCANCEL:
        case IDCANCEL:
          DestroyWindow(dialog);
          return TRUE;
      }
      break;
    case WM_CLOSE:
      DestroyWindow(dialog);
      return TRUE;
    case WM_NCDESTROY:
      if (g_coder == dialog) g_coder = nullptr;
      break;
  }
  return FALSE;
}

}  // namespace

void OpenRotCoder(HWND owner) {
  if (g_coder == nullptr) {
    g_coder = CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_ROT_CODER), owner,
                                 RotCoderProc, 0);
    if (g_coder == nullptr) return;
  } else {
    LoadCaptions(g_coder);
  }
  SetItemText(g_coder, IDC_ROT_TEXT1, ProgramRotSelection().selectedText);
  ShowWindow(g_coder, SW_SHOW);
  SetForegroundWindow(g_coder);
}

}  // namespace brindle
