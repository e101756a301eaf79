// The program's entry procedure on Windows: it refuses to run beside an
// earlier instance or a running client, loads the main form, finds the
// client's library, runs the client inside this process while holding the
// client's own single-instance mutex, and tears everything down in order
// when the client exits.
#pragma once

#include <cstdint>
#include <string>

#include "app/client_host_system.h"
#include "app/main_form.h"

namespace brindle::app {

inline constexpr const char* kMainFormClass = "ThunderRT6FormDC";
inline constexpr const char* kMainFormCaption = "OE Brindle";
inline constexpr const char* kClientWindowClass = "Outlook Express Browser Class";
inline constexpr const char* kClientMutexName = "OutlookExpress_InstanceMutex_101897";
inline constexpr const char* kNoIdentity = "{00000000-0000-0000-0000-000000000000}";
inline constexpr uint32_t kClientStartFlags = 63;

// The boxes of the procedure itself; Polish in every language, as they
// always were.
inline constexpr const char* kWrongNameText = "Zmień nazwę pliku wykonywalnego na winmail.exe";
inline constexpr const char* kWrongNameTitle = "Zła nazwa pliku exe";
inline constexpr const char* kClientRunningText =
    "Aby uruchomić OE Brindle, najpierw wyłącz Outlook Express.";
inline constexpr const char* kClientRunningTitle = "Wykryto instancję Outlook Express";

struct EntryArguments {
  std::string commandLine;  // the program's own arguments, 8-bit, handed to the client
  int16_t showState = 1;    // how the client's window is to be shown
};

// Returns the program's exit status: 0 when the client ran (or an earlier
// instance was brought forward), 1 when the program refused to start it.
int RunEntryProcedure(ClientHostSystem& system, MainForm& form, const EntryArguments& arguments);

// Where the client library is: the first of its four places that exists.
std::optional<std::string> FindClientLibrary(ClientHostSystem& system, bool windowsMail);

}  // namespace brindle::app
