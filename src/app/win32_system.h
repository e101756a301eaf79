// The production ClientHostSystem: every answer from Win32.
#pragma once

#include <windows.h>

#include <string>

#include "app/client_host_system.h"

namespace brindle::app {

class Win32System : public ClientHostSystem {
 public:
  // `programDir`: where OE_Brindle.dll lies.
  explicit Win32System(std::string programDir) : programDir_(std::move(programDir)) {}
  ~Win32System() override;

  bool WindowExists(std::string_view className, std::optional<std::string_view> caption) override;
  void BringToFront(std::string_view className) override;
  unsigned WindowsMajorVersion() override;
  std::string ProgramBaseName() override;
  std::optional<std::string> ReadRegistryString(RegistryRoot root, std::string_view key,
                                                std::string_view value) override;
  bool WriteRegistryString(RegistryRoot root, std::string_view key, std::string_view value,
                           std::string_view data) override;
  bool FileExists(const std::string& path) override;
  std::string CurrentFolder() override;
  bool SetCurrentFolder(const std::string& folder) override;
  bool CreateClientMutex(std::string_view name) override;
  bool ReleaseClientMutex() override;
  bool CloseClientMutex() override;
  bool LoadHooksLibrary() override;
  void InstallMessageHooks() override;
  void UninstallMessageHooks() override;
  void UnloadHooksLibrary() override;
  std::optional<long> RunClient(const std::string& libraryPath, uint32_t flags,
                                const std::string& commandLine, int16_t showState) override;

 private:
  using HookCall = int(WINAPI*)();
  void CallHook(const char* name);

  std::string programDir_;
  HANDLE mutex_ = nullptr;
  HMODULE hooks_ = nullptr;
};

}  // namespace brindle::app
