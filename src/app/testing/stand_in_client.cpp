// A stand-in for the client's library msoe.dll in the Windows tests: its
// CoStartOutlookExpress notes what it was given and what it found (the
// client's mutex held by another thread, the program's hooks in place, the
// current folder, and — when STAND_IN_CLIENT_CONNECT names a port — whether a
// tunnel answers there) and returns at once, as if the user had closed the
// client. When STAND_IN_CLIENT_POP3 names a port, it fetches mail 1 through
// that tunnel first and notes what arrived; with STAND_IN_CLIENT_KILL_COMPANION
// set as well, it then ends every SslBridge.exe from outside and fetches
// again, trying for a bounded while, and notes that too. With
// STAND_IN_CLIENT_LOG set, the notes also go to that file.
//
// With STAND_IN_CLIENT_REPLY set, it first opens a reply note window the way
// the client builds one (envelope, editor chain, the reply text in a
// recording HTML document), runs its messages until the note's undo history
// has been cleared (or a bound has passed), and notes the text the document
// ends with and what was asked of it.
#include <winsock2.h>
// winsock2.h must come before windows.h.
#include <windows.h>

#include <mshtml.h>
#include <oleacc.h>
#include <tlhelp32.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "oewin/fake_html_document_test.h"

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

LRESULT CALLBACK ServerProc(HWND w, UINT m, WPARAM wp, LPARAM lp) {
  static const UINT getObject = RegisterWindowMessageA("WM_HTML_GETOBJECT");
  if (m == getObject)
    return LresultFromObject(IID_IHTMLDocument2, wp,
                             reinterpret_cast<IUnknown*>(GetWindowLongPtrA(w, GWLP_USERDATA)));
  return DefWindowProcA(w, m, wp, lp);
}

HWND Window(const char* type, HWND parent, int id = 0) {
  WNDCLASSA c{};
  c.lpfnWndProc = lstrcmpA(type, "Internet Explorer_Server") == 0 ? ServerProc : DefWindowProcA;
  c.hInstance = GetModuleHandleA(nullptr);
  c.lpszClassName = type;
  RegisterClassA(&c);
  const DWORD style = parent ? WS_CHILD | WS_VISIBLE : WS_OVERLAPPEDWINDOW | WS_VISIBLE;
  return CreateWindowExA(0, type, "", style, 0, 0, 400, 300, parent,
                         reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr, nullptr);
}

std::string Narrow(const std::wstring& w) {
  return std::string(w.begin(), w.end());
}

// A reply note in front, left to the program's note tracking.
std::string RunReplyNote() {
  CoInitialize(nullptr);
  brindle::testing::FakeDocumentState state;
  state.bodyText =
      L"-- \r\nSig\r\n----- Original Message -----\r\nFrom: a@b\r\n\r\nhello\r\n-- \r\nold sig";
  IUnknown* document = brindle::testing::NewFakeHtmlDocument(&state);
  HWND note = Window("ATH_Note", nullptr);
  HWND envelope = Window("OE_Envelope", note);
  // Plain fields: what the client's own fields make of the End and ";" keys
  // is the client's business.
  for (int id : {1003, 1004, 1026})
    CreateWindowExA(0, "Static", "", WS_CHILD | WS_VISIBLE, 0, 0, 100, 20, envelope,
                    reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr, nullptr);
  SetDlgItemTextA(envelope, 1004, "Re: hello");
  HWND server =
      Window("Internet Explorer_Server", Window("##MimeEdit_Server", Window("ME_DocHost", note)));
  SetWindowLongPtrA(server, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(document));
  SetForegroundWindow(note);

  const auto done = [&] {
    return std::find(state.calls.begin(), state.calls.end(), "DiscardFrom(all)") !=
           state.calls.end();
  };
  const DWORD start = GetTickCount();
  while (!done() && GetTickCount() - start < 30000) {
    MsgWaitForMultipleObjects(0, nullptr, FALSE, 100, QS_ALLINPUT);
    MSG m;
    while (PeekMessageA(&m, nullptr, 0, 0, PM_REMOVE)) {
      TranslateMessage(&m);
      DispatchMessageA(&m);
    }
  }
  char cc[256] = {};
  GetDlgItemTextA(envelope, 1003, cc, sizeof cc);
  std::string calls;
  for (const auto& c : state.calls) calls += c + "|";
  DestroyWindow(note);
  SetWindowLongPtrA(server, GWLP_USERDATA, 0);
  document->Release();
  CoUninitialize();
  return ";reply=" + Narrow(state.bodyHtml) + ";calls=" + calls + ";cc=" + cc;
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

// Ends every companion process the way a crash or the task manager would.
int KillCompanions() {
  int killed = 0;
  HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
  PROCESSENTRY32 entry{};
  entry.dwSize = sizeof entry;
  for (BOOL more = Process32First(snapshot, &entry); more; more = Process32Next(snapshot, &entry)) {
    if (_stricmp(entry.szExeFile, "SslBridge.exe") != 0) continue;
    HANDLE process = OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, entry.th32ProcessID);
    if (process == nullptr) continue;
    if (TerminateProcess(process, 9)) {
      WaitForSingleObject(process, 5000);
      ++killed;
    }
    CloseHandle(process);
  }
  CloseHandle(snapshot);
  return killed;
}

// The mail again after the companion was killed: tried until it comes or a
// bound (well above the program's first restart wait) has passed.
std::string FetchMailAfterKill() {
  if (std::getenv("STAND_IN_CLIENT_KILL_COMPANION") == nullptr) return "";
  std::string note = ";killed=" + std::to_string(KillCompanions()) + ";pop3again=";
  std::string got;
  for (DWORD start = GetTickCount(); GetTickCount() - start < 30000; Sleep(250)) {
    got = FetchMail();
    if (got.find("+OK bye") != std::string::npos) break;
  }
  return note + got;
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
  const std::string reply = std::getenv("STAND_IN_CLIENT_REPLY") ? RunReplyNote() : "";
  char folder[MAX_PATH] = {};
  GetCurrentDirectoryA(MAX_PATH, folder);
  g_observed = "flags=" + std::to_string(flags) +
               ";cmdline=" + (commandLine ? commandLine : "(null)") +
               ";show=" + std::to_string(showState) + ";mutex=" + MutexState() +
               ";hooks=" + std::to_string(HooksInstalled()) + ";folder=" + folder +
               ";tunnel=" + TunnelState() + ";pop3=" + FetchMail();
  g_observed += FetchMailAfterKill() + reply;
  WriteLog(g_observed);
  return S_OK;
}

// What the last call observed, for the test that loaded this library.
extern "C" __declspec(dllexport) const char* WINAPI StandInObserved() {
  return g_observed.c_str();
}
