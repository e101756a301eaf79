// OE_Brindle.dll, the companion library of the program: message hooks on the
// thread that runs the client, installed before the client starts and
// removed after it has exited. The hooks see every message the client's
// thread takes and every key it gets, which is where keyboard shortcuts and
// window tracking attach. It also hands out the editor helpers the program's
// note-window code uses: an element of a document by id, and clearing the
// undo history of the editor in front.
#include <windows.h>

#include <mshtml.h>

#include "app/entry_procedure.h"
#include "oewin/editor_windows_win32.h"
#include "oewin/rot_shortcut.h"

#define BRINDLE_EXPORT extern "C" __declspec(dllexport)

namespace {

HHOOK g_messageHook = nullptr;
HHOOK g_keyboardHook = nullptr;
LONG g_messagesSeen = 0;
LONG g_keysSeen = 0;

LRESULT CALLBACK MessageHook(int code, WPARAM w, LPARAM l) {
  if (code == HC_ACTION) InterlockedIncrement(&g_messagesSeen);
  return CallNextHookEx(g_messageHook, code, w, l);
}

bool IsFirstKeyDown(LPARAM l) {
  return (l & 0xC0000000) == 0;
}  // not a release, not a repeat

LRESULT CALLBACK KeyboardHook(int code, WPARAM w, LPARAM l) {
  if (code == HC_ACTION) {
    InterlockedIncrement(&g_keysSeen);
    // Shift+F12 opens the ROT coder; the main form takes the selection.
    if (w == VK_F12 && IsFirstKeyDown(l) && GetKeyState(VK_SHIFT) < 0) {
      if (HWND form = FindWindowA(brindle::app::kMainFormClass, brindle::app::kMainFormCaption))
        PostMessageA(form, brindle::RotShortcutMessage(), 0, 0);
    }
  }
  return CallNextHookEx(g_keyboardHook, code, w, l);
}

}  // namespace

BRINDLE_EXPORT int WINAPI init() {
  g_messagesSeen = 0;
  g_keysSeen = 0;
  return 1;
}

// Thread hooks on the calling thread; a second call keeps the first hooks.
BRINDLE_EXPORT int WINAPI InstallMessageHooks() {
  const DWORD thread = GetCurrentThreadId();
  if (g_messageHook == nullptr)
    g_messageHook = SetWindowsHookExA(WH_GETMESSAGE, MessageHook, nullptr, thread);
  if (g_keyboardHook == nullptr)
    g_keyboardHook = SetWindowsHookExA(WH_KEYBOARD, KeyboardHook, nullptr, thread);
  return g_messageHook != nullptr && g_keyboardHook != nullptr;
}

BRINDLE_EXPORT int WINAPI UninstallMessageHooks() {
  if (g_messageHook != nullptr && UnhookWindowsHookEx(g_messageHook)) g_messageHook = nullptr;
  if (g_keyboardHook != nullptr && UnhookWindowsHookEx(g_keyboardHook)) g_keyboardHook = nullptr;
  return g_messageHook == nullptr && g_keyboardHook == nullptr;
}

BRINDLE_EXPORT int WINAPI deinit() {
  return UninstallMessageHooks();
}

// How many hooks are in place (0..2), and how many messages the message hook
// has seen since init: for the program's diagnostics and tests.
BRINDLE_EXPORT int WINAPI MessageHooksInstalled() {
  return (g_messageHook != nullptr) + (g_keyboardHook != nullptr);
}
BRINDLE_EXPORT int WINAPI HookedMessageCount() {
  return static_cast<int>(g_messagesSeen);
}

// The element of `document` (an IHTMLDocument2) whose id is `id`, with a
// reference for the caller; null when there is none.
BRINDLE_EXPORT IDispatch* WINAPI GetElement(IDispatch* document, BSTR id) {
  brindle::ComRef<IHTMLDocument2> html;
  if (document == nullptr || id == nullptr ||
      FAILED(document->QueryInterface(IID_IHTMLDocument2, reinterpret_cast<void**>(html.Out()))))
    return nullptr;
  brindle::ComRef<IHTMLElement> element = brindle::FindElementById(html.get(), id);
  IDispatch* result = nullptr;
  if (element) element->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&result));
  return result;
}

// Empties the undo history of the editor of the window in front (a note
// window or the main window's preview pane); 0 when there is none to clear.
BRINDLE_EXPORT int WINAPI clearUndoHistory() {
  std::unique_ptr<brindle::Editor> editor =
      brindle::OpenEditor(brindle::FindEditorWindow(GetForegroundWindow()));
  return editor && editor->ClearUndo();
}
