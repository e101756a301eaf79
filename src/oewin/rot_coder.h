// The ROT coder window (frmROT), for the main window's menu and the Shift+F12
// shortcut.
#pragma once

#include <windows.h>

namespace brindle {

// Opens the coder with the program-wide selected text in Text1, captions in
// the current language, shown in the task bar; when it is open already it
// takes the new text and comes to the front. `owner` may be null.
void OpenRotCoder(HWND owner);

}  // namespace brindle
