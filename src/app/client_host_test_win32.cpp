// The entry procedure against the real system: the client is a stand-in
// msoe.dll loaded by path, the hooks are the real OE_Brindle.dll, the mutex
// and the windows are real. Only the registry answers and the version are
// scripted, so that the test neither depends on nor changes the machine.
#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/entry_procedure.h"
#include "app/main_window_win32.h"
#include "app/win32_system.h"
#include "core/log.h"
#include "core/message_box.h"

namespace brindle::app {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

class ScriptedRegistrySystem : public Win32System {
 public:
  ScriptedRegistrySystem() : Win32System(HOOKS_DLL_DIR) {}
  unsigned version = 5;
  std::optional<std::string> appPath = std::string(STAND_IN_CLIENT_DIR) + ";";

  unsigned WindowsMajorVersion() override { return version; }
  std::optional<std::string> ReadRegistryString(RegistryRoot, std::string_view key,
                                                std::string_view value) override {
    if (key.find("App Paths\\msimn.exe") != std::string_view::npos && value == "Path")
      return appPath;
    return std::nullopt;
  }
  bool WriteRegistryString(RegistryRoot, std::string_view, std::string_view,
                           std::string_view) override {
    return true;
  }
};

class QuietForm : public MainForm {
 public:
  int loads = 0, closes = 0;
  bool Load() override { return ++loads, true; }
  std::shared_ptr<const Settings> CurrentSettings() override {
    return std::make_shared<const Settings>();
  }
  void CloseTunnels() override { ++closes; }
};

std::string CurrentFolder() {
  char folder[MAX_PATH] = {};
  GetCurrentDirectoryA(MAX_PATH, folder);
  return folder;
}

bool MutexExists() {
  HANDLE mutex = OpenMutexW(SYNCHRONIZE, FALSE, L"OutlookExpress_InstanceMutex_101897");
  if (mutex != nullptr) CloseHandle(mutex);
  return mutex != nullptr;
}

TEST(ClientHost, TheClientRunsWithItsArgumentsUnderTheMutexAndTheHooks) {
  const std::string folderBefore = CurrentFolder();
  ScriptedRegistrySystem system;
  QuietForm form;
  MessageBoxCapture boxes;
  log::Capture log;
  EXPECT_EQ(RunEntryProcedure(system, form, {"/newsurl:news://x/y \"a b\"", 7}), 0);

  HMODULE client = GetModuleHandleA((std::string(STAND_IN_CLIENT_DIR) + "\\msoe.dll").c_str());
  ASSERT_NE(client, nullptr) << "the stand-in client was never loaded";
  using Observed = const char*(WINAPI*)();
  auto observed = reinterpret_cast<Observed>(
      reinterpret_cast<void*>(GetProcAddress(client, "StandInObserved")));
  ASSERT_NE(observed, nullptr);
  const std::string seen = observed();
  EXPECT_THAT(seen, HasSubstr("flags=63;cmdline=/newsurl:news://x/y \"a b\";show=7;"));
  EXPECT_THAT(seen, HasSubstr(";mutex=held;"));
  EXPECT_THAT(seen, HasSubstr(";hooks=2;"));
  EXPECT_THAT(seen, HasSubstr(std::string(";folder=") + STAND_IN_CLIENT_DIR));

  EXPECT_FALSE(MutexExists()) << "released and closed after the client";
  EXPECT_EQ(GetModuleHandleA("OE_Brindle.dll"), nullptr) << "unloaded at the end";
  EXPECT_EQ(form.loads, 1);
  EXPECT_EQ(form.closes, 1);
  EXPECT_THAT(boxes.Boxes(), IsEmpty());
  EXPECT_THAT(log.Text(), HasSubstr("info: OE exited\ninfo: Mutex released\ninfo: Handle closed\n"
                                    "info: tunnels closed\ninfo: OEBR unloaded\n"));
  SetCurrentDirectoryA(folderBefore.c_str());
}

TEST(ClientHost, RefusalsOnTheRealSystemLeaveTheClientAlone) {
  ScriptedRegistrySystem system;
  system.appPath = std::nullopt;  // and no msoe.dll anywhere else on this machine
  QuietForm form;
  {
    MessageBoxCapture boxes;
    EXPECT_EQ(RunEntryProcedure(system, form, {"", 1}), 1);
    ASSERT_EQ(boxes.Boxes().size(), 1u);
    EXPECT_EQ(boxes.Boxes()[0].text, "Can't find msoe.dll.");
    EXPECT_EQ(form.closes, 1);
  }
  // On Vista and later the program must carry Windows Mail's name.
  system.version = 6;
  MessageBoxCapture boxes;
  EXPECT_EQ(RunEntryProcedure(system, form, {"", 1}), 1);
  ASSERT_EQ(boxes.Boxes().size(), 1u);
  EXPECT_EQ(boxes.Boxes()[0].title, "Zła nazwa pliku exe");
  EXPECT_EQ(form.loads, 1);
  EXPECT_FALSE(MutexExists());
}

TEST(MainWindow, IsFoundByASecondStartHidesOnUserCloseAndRunsPostedWork) {
  MainWindow window;
  ASSERT_TRUE(window.Create());
  ScriptedRegistrySystem system;
  EXPECT_TRUE(system.WindowExists(kMainFormClass, kMainFormCaption));
  QuietForm form;
  EXPECT_EQ(RunEntryProcedure(system, form, {"", 1}), 0);  // an earlier instance: step aside
  EXPECT_EQ(form.loads, 0);

  ShowWindow(window.Handle(), SW_SHOW);
  SendMessageA(window.Handle(), WM_SYSCOMMAND, SC_CLOSE, 0);
  ASSERT_TRUE(IsWindow(window.Handle()));
  EXPECT_FALSE(IsWindowVisible(window.Handle()));
  EXPECT_FALSE(window.Closing());

  bool ran = false;
  std::thread other([&] { window.Post([&] { ran = true; }); });
  other.join();
  window.PumpUntil(ran);
  EXPECT_TRUE(ran);

  HWND handle = window.Handle();
  SendMessageA(handle, WM_CLOSE, 0, 0);
  EXPECT_FALSE(IsWindow(handle));
  EXPECT_TRUE(window.Closing());
}

TEST(HooksLibrary, InstallsThreadHooksOnceAndRemovesThem) {
  HMODULE hooks = LoadLibraryA((std::string(HOOKS_DLL_DIR) + "\\OE_Brindle.dll").c_str());
  ASSERT_NE(hooks, nullptr);
  using Call = int(WINAPI*)();
  auto get = [&](const char* name) {
    return reinterpret_cast<Call>(reinterpret_cast<void*>(GetProcAddress(hooks, name)));
  };
  for (const char* name : {"init", "deinit", "InstallMessageHooks", "UninstallMessageHooks"})
    ASSERT_NE(get(name), nullptr) << name;
  get("init")();
  EXPECT_TRUE(get("InstallMessageHooks")());
  EXPECT_TRUE(get("InstallMessageHooks")());  // harmless twice
  EXPECT_EQ(get("MessageHooksInstalled")(), 2);

  MSG message;
  PostThreadMessageA(GetCurrentThreadId(), WM_APP + 7, 0, 0);
  ASSERT_TRUE(PeekMessageA(&message, nullptr, WM_APP + 7, WM_APP + 7, PM_REMOVE));
  const int seen = get("HookedMessageCount")();
  EXPECT_GT(seen, 0) << "the message hook did not see the thread's message";

  EXPECT_TRUE(get("UninstallMessageHooks")());
  EXPECT_EQ(get("MessageHooksInstalled")(), 0);
  PostThreadMessageA(GetCurrentThreadId(), WM_APP + 7, 0, 0);
  ASSERT_TRUE(PeekMessageA(&message, nullptr, WM_APP + 7, WM_APP + 7, PM_REMOVE));
  EXPECT_EQ(get("HookedMessageCount")(), seen);
  get("deinit")();
  FreeLibrary(hooks);
}

}  // namespace
}  // namespace brindle::app
