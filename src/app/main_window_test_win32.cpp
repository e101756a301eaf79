// The Windows pieces against the real system: the hidden main window and the
// hooks library. (The whole program runs in program_test_win32.cpp.)
#include <windows.h>

#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/entry_procedure.h"
#include "app/main_window_win32.h"
#include "app/win32_system.h"

namespace brindle::app {
namespace {

TEST(MainWindow, IsFoundByASecondStartHidesOnUserCloseAndRunsPostedWork) {
  MainWindow window;
  ASSERT_TRUE(window.Create());
  Win32System system(HOOKS_DLL_DIR);
  EXPECT_TRUE(system.WindowExists(kMainFormClass, kMainFormCaption));  // what a second start sees

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
