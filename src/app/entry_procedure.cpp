#include "app/entry_procedure.h"

#include <algorithm>
#include <vector>

#include "app/milestones.h"
#include "core/language.h"
#include "core/log.h"
#include "core/message_box.h"
#include "core/text.h"

namespace brindle::app {
namespace {

constexpr const char* kAppPathsKey =
    "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\msimn.exe";
constexpr const char* kCurrentVersionKey = "Software\\Microsoft\\Windows\\CurrentVersion";
constexpr const char* kDefaultProgramFiles = "C:\\Program Files";
constexpr const char* kClientLibrary = "msoe.dll";
constexpr int kMissingClientString = 159;

// Windows Mail replaced the client from Vista (6.0) on; its library only
// runs inside a process named like its own program.
bool WindowsMailSystem(ClientHostSystem& system) {
  return system.WindowsMajorVersion() >= 6;
}

// Registry texts may carry a NUL and, for App Paths, a trailing list
// separator or backslash.
std::string CleanFolder(std::string folder) {
  folder = folder.substr(0, folder.find('\0'));
  while (!folder.empty() && (folder.back() == ';' || folder.back() == '\\')) folder.pop_back();
  return folder;
}

std::string FolderOf(const std::string& path) {
  const auto slash = path.find_last_of('\\');
  return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

// Checks before anything has been started: nothing when the program may go
// on, else the exit status to end with.
std::optional<int> Refusal(ClientHostSystem& system) {
  if (system.WindowExists(kMainFormClass, kMainFormCaption)) {
    // The earlier instance runs the client: show that one instead.
    system.BringToFront(kClientWindowClass);
    return 0;
  }
  if (WindowsMailSystem(system) &&
      !EqualsNoCase(system.ProgramBaseName() + ".exe", "WINMAIL.EXE")) {
    ShowMessageBox(kWrongNameText, kWrongNameTitle, BoxIcon::kCritical);
    return 1;
  }
  if (system.WindowExists(kClientWindowClass, std::nullopt)) {
    ShowMessageBox(kClientRunningText, kClientRunningTitle, BoxIcon::kExclamation);
    return 1;
  }
  return std::nullopt;
}

void RunClientHoldingItsMutex(ClientHostSystem& system, const std::string& library,
                              const EntryArguments& arguments) {
  const auto identity =
      system.ReadRegistryString(RegistryRoot::kCurrentUser, "Identities", "Last Username");
  log::Debug("identity in use: " + identity.value_or("(none)"));
  if (!system.CreateClientMutex(kClientMutexName)) log::Warning("client mutex not created");
  if (!system.LoadHooksLibrary()) log::Warning("OE_Brindle.dll not loaded: no message hooks");
  system.InstallMessageHooks();
  const auto result =
      system.RunClient(library, kClientStartFlags, arguments.commandLine, arguments.showState);
  system.UninstallMessageHooks();
  if (!result) log::Error("cannot run the client from " + library);
  log::Info(milestone::kClientExited);
  system.ReleaseClientMutex();
  log::Info(milestone::kMutexReleased);
  system.CloseClientMutex();
  log::Info(milestone::kHandleClosed);
}

}  // namespace

std::optional<std::string> FindClientLibrary(ClientHostSystem& system, bool windowsMail) {
  const std::string programFiles = CleanFolder(
      system.ReadRegistryString(RegistryRoot::kLocalMachine, kCurrentVersionKey, "ProgramFilesDir")
          .value_or(kDefaultProgramFiles));
  std::optional<std::string> clientFolder;
  if (windowsMail)
    clientFolder = programFiles + "\\Windows Mail";
  else if (auto path = system.ReadRegistryString(RegistryRoot::kLocalMachine, kAppPathsKey, "Path"))
    clientFolder = CleanFolder(*path);

  std::vector<std::string> candidates;
  if (clientFolder && !clientFolder->empty())
    candidates.push_back(*clientFolder + "\\" + kClientLibrary);
  candidates.push_back(system.CurrentFolder() + "\\" + kClientLibrary);
  candidates.push_back(programFiles + "\\Outlook Express\\" + kClientLibrary);
  candidates.push_back(std::string(kDefaultProgramFiles) + "\\Outlook Express\\" + kClientLibrary);
  for (const std::string& candidate : candidates) {
    if (!system.FileExists(candidate)) continue;
    system.SetCurrentFolder(FolderOf(candidate));
    return candidate;
  }
  return std::nullopt;
}

int RunEntryProcedure(ClientHostSystem& system, MainForm& form, const EntryArguments& arguments) {
  if (const auto status = Refusal(system)) return *status;
  if (!form.Load()) return 1;

  const auto library = FindClientLibrary(system, WindowsMailSystem(system));
  if (!library) {
    const auto settings = form.CurrentSettings();
    ShowMessageBox(LanguageString(*settings, kMissingClientString), kMainFormCaption,
                   BoxIcon::kCritical);
    form.CloseTunnels();
    return 1;
  }
  RunClientHoldingItsMutex(system, *library, arguments);
  form.CloseTunnels();
  log::Info(milestone::kTunnelsClosed);
  system.UnloadHooksLibrary();
  log::Info(milestone::kUnloaded);

  if (form.CurrentSettings()->intLogoffAfterClose != 0) {
    system.WriteRegistryString(RegistryRoot::kCurrentUser, "Identities", "Last User ID",
                               kNoIdentity);
    system.WriteRegistryString(RegistryRoot::kCurrentUser, "Identities", "Start As", kNoIdentity);
  }
  return 0;
}

}  // namespace brindle::app
