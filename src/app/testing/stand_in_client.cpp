// A stand-in for the client's library msoe.dll in the Windows tests: its
// CoStartOutlookExpress notes what it was given and what it found (the
// client's mutex held by another thread, the program's hooks in place, the
// current folder, and — when STAND_IN_CLIENT_CONNECT names a port — whether a
// tunnel answers there) and returns at once, as if the user had closed the
// client. When STAND_IN_CLIENT_POP3 names a port, it fetches mail 1 through
// that tunnel first and notes what arrived. With STAND_IN_CLIENT_LOG set, the
// notes also go to that file.
#include <winsock2.h>
// winsock2.h must come before windows.h.
#include <windows.h>

#include <cstdio>
#include <cstdlib>
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

// Like a client reaching its news server through the tunnel.
const char* TunnelState() {
  const char* port = std::getenv("STAND_IN_CLIENT_CONNECT");
  if (port == nullptr) return "unasked";
  WSADATA data;
  WSAStartup(MAKEWORD(2, 2), &data);
  SOCKET s = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<u_short>(std::atoi(port)));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const bool up = connect(s, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
  closesocket(s);
  WSACleanup();
  return up ? "ok" : "refused";
}

// Reads until `end` has arrived, the connection closed, or the read limit.
std::string ReadUntil(SOCKET s, const std::string& end) {
  std::string text;
  char buffer[4096];
  while (text.find(end) == std::string::npos) {
    int n = recv(s, buffer, sizeof buffer, 0);
    if (n <= 0) break;
    text.append(buffer, static_cast<size_t>(n));
  }
  return text;
}

// Like a mail client fetching its first message through a POP3 tunnel.
std::string FetchMail() {
  const char* port = std::getenv("STAND_IN_CLIENT_POP3");
  if (port == nullptr) return "";
  WSADATA data;
  WSAStartup(MAKEWORD(2, 2), &data);
  SOCKET s = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
  DWORD limit = 20000;
  setsockopt(s, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&limit), sizeof limit);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<u_short>(std::atoi(port)));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  std::string got = "(no connection)";
  if (connect(s, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) {
    got = ReadUntil(s, "\r\n");
    send(s, "RETR 1\r\n", 8, 0);
    got += ReadUntil(s, "\r\n.\r\n");
    send(s, "QUIT\r\n", 6, 0);
    got += ReadUntil(s, "\r\n");
  }
  closesocket(s);
  WSACleanup();
  return got;
}

void WriteLog(const std::string& text) {
  const char* path = std::getenv("STAND_IN_CLIENT_LOG");
  if (path == nullptr) return;
  if (FILE* f = std::fopen(path, "wb")) {
    std::fputs(text.c_str(), f);
    std::fclose(f);
  }
}

}  // namespace

extern "C" __declspec(dllexport) HRESULT WINAPI
    CoStartOutlookExpress(DWORD flags, LPCSTR commandLine, INT showState) {
  char folder[MAX_PATH] = {};
  GetCurrentDirectoryA(MAX_PATH, folder);
  g_observed = "flags=" + std::to_string(flags) +
               ";cmdline=" + (commandLine ? commandLine : "(null)") +
               ";show=" + std::to_string(showState) + ";mutex=" + MutexState() +
               ";hooks=" + std::to_string(HooksInstalled()) + ";folder=" + folder +
               ";tunnel=" + TunnelState() + ";pop3=" + FetchMail();
  WriteLog(g_observed);
  return S_OK;
}

// What the last call observed, for the test that loaded this library.
extern "C" __declspec(dllexport) const char* WINAPI StandInObserved() {
  return g_observed.c_str();
}
