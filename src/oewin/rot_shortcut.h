// Shift+F12: the companion library's keyboard hook tells the main form, which
// takes the selection of the window in front and opens the ROT coder with it.
#pragma once

#include <windows.h>

namespace brindle {

// The name of the message the hook posts to the main form.
inline constexpr char kRotShortcutMessageName[] = "OE Brindle ROT shortcut";

// Its number in this session (the same in the library and the program).
UINT RotShortcutMessage();

// The main form's answer: the selected text of the note window or preview
// pane in front becomes the program-wide selected text, its editor the
// current document, and the ROT coder opens with it.
void OnRotShortcut(HWND mainForm);

}  // namespace brindle
