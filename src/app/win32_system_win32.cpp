#include "app/win32_system.h"

namespace brindle::app {
namespace {

HKEY RootKey(RegistryRoot root) {
  return root == RegistryRoot::kLocalMachine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

std::wstring Wide(std::string_view text) {
  std::wstring wide;
  for (char c : text) wide.push_back(static_cast<wchar_t>(static_cast<unsigned char>(c)));
  return wide;
}

}  // namespace

Win32System::~Win32System() {
  CloseClientMutex();
  UnloadHooksLibrary();
}

bool Win32System::WindowExists(std::string_view className,
                               std::optional<std::string_view> caption) {
  const std::string type(className);
  const std::string text(caption.value_or(""));
  return FindWindowA(type.c_str(), caption ? text.c_str() : nullptr) != nullptr;
}

void Win32System::BringToFront(std::string_view className) {
  const std::string type(className);
  HWND window = FindWindowA(type.c_str(), nullptr);
  if (window == nullptr) return;
  if (IsIconic(window)) ShowWindow(window, SW_RESTORE);
  SetForegroundWindow(window);
}

// The version as the system knows it, not as a compatibility shim reports it
// to a program without a manifest.
unsigned Win32System::WindowsMajorVersion() {
  using RtlGetVersionCall = LONG(WINAPI*)(OSVERSIONINFOW*);
  HMODULE ntdll = GetModuleHandleA("ntdll.dll");
  auto call = ntdll ? reinterpret_cast<RtlGetVersionCall>(
                          reinterpret_cast<void*>(GetProcAddress(ntdll, "RtlGetVersion")))
                    : nullptr;
  OSVERSIONINFOW info{};
  info.dwOSVersionInfoSize = sizeof info;
  if (call != nullptr && call(&info) == 0) return info.dwMajorVersion;
  return LOBYTE(LOWORD(GetVersion()));
}

std::string Win32System::ProgramBaseName() {
  char path[MAX_PATH] = {};
  GetModuleFileNameA(nullptr, path, MAX_PATH);
  std::string name(path);
  name = name.substr(name.find_last_of("\\/") + 1);
  const auto dot = name.find_last_of('.');
  return dot == std::string::npos ? name : name.substr(0, dot);
}

std::optional<std::string> Win32System::ReadRegistryString(RegistryRoot root, std::string_view key,
                                                           std::string_view value) {
  HKEY opened = nullptr;
  const std::string keyName(key), valueName(value);
  if (RegOpenKeyExA(RootKey(root), keyName.c_str(), 0, KEY_READ, &opened) != ERROR_SUCCESS)
    return std::nullopt;
  DWORD type = 0, size = 0;
  std::optional<std::string> result;
  if (RegQueryValueExA(opened, valueName.c_str(), nullptr, &type, nullptr, &size) ==
          ERROR_SUCCESS &&
      (type == REG_SZ || type == REG_EXPAND_SZ)) {
    std::string data(size, '\0');
    if (RegQueryValueExA(opened, valueName.c_str(), nullptr, nullptr,
                         reinterpret_cast<BYTE*>(data.data()), &size) == ERROR_SUCCESS)
      result = data.substr(0, data.find('\0'));
  }
  RegCloseKey(opened);
  return result;
}

bool Win32System::WriteRegistryString(RegistryRoot root, std::string_view key,
                                      std::string_view value, std::string_view data) {
  HKEY opened = nullptr;
  const std::string keyName(key), valueName(value), text(data);
  if (RegCreateKeyExA(RootKey(root), keyName.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &opened,
                      nullptr) != ERROR_SUCCESS)
    return false;
  const bool written = RegSetValueExA(opened, valueName.c_str(), 0, REG_SZ,
                                      reinterpret_cast<const BYTE*>(text.c_str()),
                                      static_cast<DWORD>(text.size() + 1)) == ERROR_SUCCESS;
  RegCloseKey(opened);
  return written;
}

bool Win32System::FileExists(const std::string& path) {
  const DWORD attributes = GetFileAttributesA(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

std::string Win32System::CurrentFolder() {
  char folder[MAX_PATH] = {};
  const DWORD length = GetCurrentDirectoryA(MAX_PATH, folder);
  std::string text(folder, length < MAX_PATH ? length : 0);
  if (!text.empty() && text.back() == '\\') text.pop_back();  // a drive's root, "C:\"
  return text;
}

bool Win32System::SetCurrentFolder(const std::string& folder) {
  // "C:" alone would mean that drive's current folder, not its root.
  const std::string target = folder.size() == 2 && folder[1] == ':' ? folder + "\\" : folder;
  return SetCurrentDirectoryA(target.c_str()) != 0;
}

bool Win32System::CreateClientMutex(std::string_view name) {
  mutex_ = CreateMutexW(nullptr, TRUE, Wide(name).c_str());
  return mutex_ != nullptr;
}

bool Win32System::ReleaseClientMutex() {
  return mutex_ != nullptr && ReleaseMutex(mutex_);
}

bool Win32System::CloseClientMutex() {
  if (mutex_ == nullptr) return false;
  const bool closed = CloseHandle(mutex_);
  mutex_ = nullptr;
  return closed;
}

bool Win32System::LoadHooksLibrary() {
  if (hooks_ == nullptr) hooks_ = LoadLibraryA((programDir_ + "\\OE_Brindle.dll").c_str());
  if (hooks_ == nullptr) return false;
  CallHook("init");
  return true;
}

void Win32System::CallHook(const char* name) {
  if (hooks_ == nullptr) return;
  auto call = reinterpret_cast<HookCall>(reinterpret_cast<void*>(GetProcAddress(hooks_, name)));
  if (call != nullptr) call();
}

void Win32System::InstallMessageHooks() {
  CallHook("InstallMessageHooks");
}
void Win32System::UninstallMessageHooks() {
  CallHook("UninstallMessageHooks");
}

void Win32System::UnloadHooksLibrary() {
  if (hooks_ == nullptr) return;
  CallHook("deinit");
  FreeLibrary(hooks_);
  hooks_ = nullptr;
}

std::optional<long> Win32System::RunClient(const std::string& libraryPath, uint32_t flags,
                                           const std::string& commandLine, int16_t showState) {
  using StartCall = HRESULT(WINAPI*)(DWORD, LPCSTR, INT);
  // The client's library stays loaded: the client may leave threads behind.
  HMODULE client = LoadLibraryA(libraryPath.c_str());
  if (client == nullptr) return std::nullopt;
  auto start = reinterpret_cast<StartCall>(
      reinterpret_cast<void*>(GetProcAddress(client, "CoStartOutlookExpress")));
  if (start == nullptr) return std::nullopt;
  return static_cast<long>(start(flags, commandLine.c_str(), showState));
}

}  // namespace brindle::app
