#include "oewin/rot_shortcut.h"

#include <memory>

#include "oewin/editor_windows_win32.h"
#include "oewin/rot_coder.h"
#include "oewin/rot_coder_model.h"

namespace brindle {

UINT RotShortcutMessage() {
  static const UINT message = RegisterWindowMessageA(kRotShortcutMessageName);
  return message;
}

void OnRotShortcut(HWND mainForm) {
  std::shared_ptr<Editor> editor = OpenEditor(FindEditorWindow(GetForegroundWindow()));
  RotSelection& selection = ProgramRotSelection();
  selection.currentDocument = editor;
  selection.selectedText = editor ? editor->SelectionText().value_or(std::string()) : std::string();
  OpenRotCoder(mainForm);
}

}  // namespace brindle
