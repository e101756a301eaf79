// Every call into the operating system that hosting the client makes: window
// lookups, the version, the registry, files, the client's mutex, the hooks
// library, the shell and the client library itself. The entry procedure sees
// the system only through this interface, so tests can drive each answer;
// the production implementation calls Win32.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace brindle::app {

enum class RegistryRoot { kLocalMachine, kCurrentUser };

class ClientHostSystem {
 public:
  virtual ~ClientHostSystem() = default;

  // A top-level window of this class (and caption, when given) exists.
  virtual bool WindowExists(std::string_view className,
                            std::optional<std::string_view> caption) = 0;
  // Restores the top-level window of this class and brings it to the front.
  virtual void BringToFront(std::string_view className) = 0;
  virtual unsigned WindowsMajorVersion() = 0;
  // The program's own file name without folder and extension.
  virtual std::string ProgramBaseName() = 0;

  // A string value; nothing when the key or value cannot be read.
  virtual std::optional<std::string> ReadRegistryString(RegistryRoot root, std::string_view key,
                                                        std::string_view value) = 0;
  virtual bool WriteRegistryString(RegistryRoot root, std::string_view key, std::string_view value,
                                   std::string_view data) = 0;

  virtual bool FileExists(const std::string& path) = 0;
  virtual std::string CurrentFolder() = 0;
  virtual bool SetCurrentFolder(const std::string& folder) = 0;

  // The client's single-instance mutex, created (and owned) by this process.
  virtual bool CreateClientMutex(std::string_view name) = 0;
  virtual bool ReleaseClientMutex() = 0;
  virtual bool CloseClientMutex() = 0;

  // The companion library "OE_Brindle.dll": loaded and initialised; its
  // message hooks around the client's run; released at the end.
  virtual bool LoadHooksLibrary() = 0;
  virtual void InstallMessageHooks() = 0;
  virtual void UninstallMessageHooks() = 0;
  virtual void UnloadHooksLibrary() = 0;

  // Runs the client from its library (CoStartOutlookExpress) and returns its
  // result when the client has exited; nothing when the library or its entry
  // cannot be loaded.
  virtual std::optional<long> RunClient(const std::string& libraryPath, uint32_t flags,
                                        const std::string& commandLine, int16_t showState) = 0;
};

}  // namespace brindle::app
