// The Editor over a plain "RichEdit20W" control, through its EM_ messages.
// The control counts a line end as one character, so positions come from the
// control's own search, never from offsets in the CR LF text.
#include <richedit.h>

#include "oewin/ansi_text_win32.h"
#include "oewin/editor_text.h"
#include "oewin/editor_windows_win32.h"
#include "oewin/quote_fix.h"

namespace brindle {
namespace {

class RichEditEditor final : public Editor {
 public:
  explicit RichEditEditor(HWND control) : control_(control) {}

  EditorKind Kind() const override { return EditorKind::kRichEdit; }

  std::optional<std::string> Text() override {
    if (!IsWindow(control_)) return std::nullopt;
    std::wstring text(static_cast<size_t>(GetWindowTextLengthW(control_)) + 1, L'\0');
    text.resize(static_cast<size_t>(GetWindowTextW(control_, text.data(), int(text.size()))));
    return NormaliseLineEnds(WideToAnsi(text));  // the control may end paragraphs with CR alone
  }

  bool SetText(std::string_view text) override {
    const std::wstring wide = AnsiToWide(NormaliseLineEnds(text));
    return SendMessageW(control_, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(wide.c_str())) != 0;
  }

  bool SelectAndRemoveMarker() override {
    const std::wstring marker = AnsiToWide(kCursorMarker);
    FINDTEXTEXW find{};
    find.chrg = {0, -1};
    find.lpstrText = marker.c_str();
    if (SendMessageW(control_, EM_FINDTEXTEXW, FR_DOWN | FR_MATCHCASE,
                     reinterpret_cast<LPARAM>(&find)) < 0)
      return false;
    SendMessageW(control_, EM_EXSETSEL, 0, reinterpret_cast<LPARAM>(&find.chrgText));
    SendMessageW(control_, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(L""));
    return true;
  }

  std::optional<std::string> SelectionText() override {
    if (!IsWindow(control_)) return std::nullopt;
    CHARRANGE range{};
    SendMessageW(control_, EM_EXGETSEL, 0, reinterpret_cast<LPARAM>(&range));
    if (range.cpMax <= range.cpMin) return std::string();
    std::wstring text(static_cast<size_t>(range.cpMax - range.cpMin) + 1, L'\0');
    text.resize(static_cast<size_t>(
        SendMessageW(control_, EM_GETSELTEXT, 0, reinterpret_cast<LPARAM>(text.data()))));
    return NormaliseLineEnds(WideToAnsi(text));
  }

  bool ReplaceSelection(std::string_view text) override {
    if (!IsWindow(control_)) return false;
    const std::wstring wide = AnsiToWide(NormaliseLineEnds(text));
    SendMessageW(control_, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(wide.c_str()));
    return true;
  }

  bool ClearUndo() override {
    if (!IsWindow(control_)) return false;
    SendMessageW(control_, EM_EMPTYUNDOBUFFER, 0, 0);
    return true;
  }

 private:
  HWND control_;
};

}  // namespace

std::unique_ptr<Editor> MakeRichEditEditor(HWND control) {
  if (control == nullptr) return nullptr;
  return std::make_unique<RichEditEditor>(control);
}

}  // namespace brindle
