// OE_Brindle.dll, the companion library of the program: message hooks on the
// thread that runs the client, installed before the client starts and
// removed after it has exited. The hooks see every message the client's
// thread takes and every key it gets, which is where keyboard shortcuts and
// window tracking attach.
#include <windows.h>

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

LRESULT CALLBACK KeyboardHook(int code, WPARAM w, LPARAM l) {
  if (code == HC_ACTION) InterlockedIncrement(&g_keysSeen);
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
