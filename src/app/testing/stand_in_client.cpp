// A stand-in for the client's library msoe.dll in the Windows tests: its
// CoStartOutlookExpress notes what it was given and what it found (the
// client's mutex held by another thread, the program's hooks in place, the
// current folder) and returns at once, as if the user had closed the client.
#include <windows.h>

#include <string>

namespace {

std::string g_observed;

// The mutex counts as held when another thread cannot take it.
const char* MutexState() {
  HANDLE mutex = OpenMutexW(SYNCHRONIZE, FALSE, L"OutlookExpress_InstanceMutex_101897");
  if (mutex == nullptr) return "missing";
  DWORD wait = WAIT_FAILED;
  HANDLE probe = CreateThread(
      nullptr, 0,
      [](void* handle) -> DWORD {
        const DWORD result = WaitForSingleObject(static_cast<HANDLE>(handle), 0);
        if (result == WAIT_OBJECT_0 || result == WAIT_ABANDONED) ReleaseMutex(handle);
        return result;
      },
      mutex, 0, nullptr);
  WaitForSingleObject(probe, INFINITE);
  GetExitCodeThread(probe, &wait);
  CloseHandle(probe);
  CloseHandle(mutex);
  return wait == WAIT_TIMEOUT ? "held" : "free";
}

int HooksInstalled() {
  HMODULE hooks = GetModuleHandleA("OE_Brindle.dll");
  if (hooks == nullptr) return -1;
  using Count = int(WINAPI*)();
  auto count = reinterpret_cast<Count>(
      reinterpret_cast<void*>(GetProcAddress(hooks, "MessageHooksInstalled")));
  return count != nullptr ? count() : -1;
}

}  // namespace

extern "C" __declspec(dllexport) HRESULT WINAPI
    CoStartOutlookExpress(DWORD flags, LPCSTR commandLine, INT showState) {
  char folder[MAX_PATH] = {};
  GetCurrentDirectoryA(MAX_PATH, folder);
  g_observed = "flags=" + std::to_string(flags) +
               ";cmdline=" + (commandLine ? commandLine : "(null)") +
               ";show=" + std::to_string(showState) + ";mutex=" + MutexState() +
               ";hooks=" + std::to_string(HooksInstalled()) + ";folder=" + folder;
  return S_OK;
}

// What the last call observed, for the test that loaded this library.
extern "C" __declspec(dllexport) const char* WINAPI StandInObserved() {
  return g_observed.c_str();
}
