// The main window's menus and tray icon, driven by the messages Windows
// sends them; and once, under a real X display, the shell's icon itself.
#include <windows.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "core/language.h"
#include "core/language_wide.h"
#include "core/settings_file.h"
#include "ui/main_window_ui_win32.h"
#include "ui/options_ids.h"

namespace brindle::ui {
namespace {

MainWindowUi* g_ui = nullptr;

LRESULT CALLBACK TestProcedure(HWND w, UINT message, WPARAM wp, LPARAM lp) {
  if (g_ui != nullptr && g_ui->Handle(message, wp, lp)) return 0;
  return DefWindowProcW(w, message, wp, lp);
}

std::wstring MenuText(HMENU menu, UINT position) {
  wchar_t text[128] = L"";
  GetMenuStringW(menu, position, text, 128, MF_BYPOSITION);
  return text;
}

bool Checked(HMENU menu, UINT id) {
  return (GetMenuState(menu, id, MF_BYCOMMAND) & MF_CHECKED) != 0;
}

class MainWindowUiTest : public ::testing::Test {
 protected:
  void SetUp() override {
    WNDCLASSW type{};
    type.lpfnWndProc = &TestProcedure;
    type.hInstance = GetModuleHandleW(nullptr);
    type.lpszClassName = L"BrindleUiTestMain";
    RegisterClassW(&type);
    window_ = CreateWindowExW(0, L"BrindleUiTestMain", L"OE Brindle", WS_OVERLAPPEDWINDOW, 0, 0,
                              400, 300, nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
    ASSERT_NE(window_, nullptr);
    file_ = std::filesystem::temp_directory_path() /
            ("brindle-main-" + std::to_string(GetCurrentProcessId()) + ".ini");
    Settings s;
    s.strIniPath = file_.string();
    s.intTrayIcon = 0;
    store_ = std::make_unique<SettingsStore>(s);
    applier_ = std::make_unique<SettingsApplier>(*store_, nullptr);
    languages_ = std::make_unique<LanguageMenu>(*store_, windows_,
                                                [](const Settings& s) { (void)SaveSettings2Ini(s); /* a failure is logged by the writer */ });
    options_ = std::make_unique<OptionsWindow>(*applier_, windows_);
    MainWindowActions actions;
    actions.showClient = [this] { ++clientShown_; };
    ui_ = std::make_unique<MainWindowUi>(window_, *applier_, windows_, *languages_, *options_,
                                         nullptr, actions);
    g_ui = ui_.get();
  }
  void TearDown() override {
    g_ui = nullptr;
    ui_.reset();
    options_.reset();
    DestroyWindow(window_);
    std::filesystem::remove(file_);
  }
  std::string File() {
    std::ifstream in(file_, std::ios::binary);
    std::stringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
  }
  void Command(UINT id) { SendMessageW(window_, WM_COMMAND, id, 0); }

  HWND window_ = nullptr;
  std::filesystem::path file_;
  std::unique_ptr<SettingsStore> store_;
  std::unique_ptr<SettingsApplier> applier_;
  LanguageWindows windows_;
  std::unique_ptr<LanguageMenu> languages_;
  std::unique_ptr<OptionsWindow> options_;
  std::unique_ptr<MainWindowUi> ui_;
  int clientShown_ = 0;
};

TEST_F(MainWindowUiTest, SwitchesAndLanguageChangeMenusWindowsAndFile) {
  HMENU bar = GetMenu(window_);
  ASSERT_EQ(bar, ui_->MenuBar());
  EXPECT_EQ(GetMenuItemCount(bar), 3);
  EXPECT_TRUE(Checked(bar, IDM_PREVIEW));
  EXPECT_TRUE(Checked(bar, IDM_LANG_FIRST + 1));

  Command(IDM_PREVIEW);
  Command(IDM_ISO);
  EXPECT_EQ(store_->Current()->intPreview, 0);
  EXPECT_EQ(store_->Current()->intISO, 0);
  EXPECT_FALSE(Checked(ui_->MenuBar(), IDM_PREVIEW));
  EXPECT_FALSE(Checked(ui_->TrayMenu(), IDM_ISO));
  EXPECT_NE(File().find("\r\nISO=0\r\n"), std::string::npos);
  EXPECT_NE(File().find("\r\nPreview=0\r\n"), std::string::npos);

  Command(IDM_OPTIONS);
  ASSERT_NE(options_->Handle(), nullptr);
  Command(IDM_LANG_FIRST + 0);  // Polski
  EXPECT_EQ(MenuText(ui_->MenuBar(), 0), Utf8ToWide(LanguageString(kLangPolish, 1)));
  EXPECT_TRUE(Checked(ui_->MenuBar(), IDM_LANG_FIRST));
  EXPECT_FALSE(Checked(ui_->TrayMenu(), IDM_LANG_FIRST + 1));
  wchar_t caption[128];
  GetDlgItemTextW(options_->Handle(), IDOK, caption, 128);
  EXPECT_EQ(std::wstring(caption), Utf8ToWide(LanguageString(kLangPolish, 31)));
  EXPECT_NE(File().find("\r\nLanguage=PL\r\n"), std::string::npos);
  EXPECT_NE(File().find("\r\nPreview=0\r\n"), std::string::npos);

  Command(IDM_ABOUT);
  EXPECT_EQ(options_->CurrentTab(), 11u);
}

TEST_F(MainWindowUiTest, TrayDoubleClickAndRightClickMenu) {
  SendMessageW(window_, kTrayCallback, 1, WM_LBUTTONDBLCLK);
  EXPECT_EQ(clientShown_, 1);
  EXPECT_FALSE(IsWindowVisible(window_));
  Settings next = *store_->Current();
  next.intTrayDoubleClick = 1;
  applier_->Apply(next);
  SendMessageW(window_, kTrayCallback, 1, WM_LBUTTONDBLCLK);
  EXPECT_EQ(clientShown_, 1);
  EXPECT_TRUE(IsWindowVisible(window_));

  // The right click opens the tray menu; a second thread looks at it and
  // closes it again.
  std::atomic<int> items = -1;
  std::atomic<bool> previewChecked = false;
  std::thread driver([&] {
    HWND popup = nullptr;
    for (int i = 0; i < 500 && popup == nullptr; ++i) {
      popup = FindWindowW(L"#32768", nullptr);
      if (popup == nullptr || !IsWindowVisible(popup)) popup = nullptr, Sleep(10);
    }
    if (popup == nullptr) return;
    auto menu = reinterpret_cast<HMENU>(SendMessageW(popup, MN_GETHMENU, 0, 0));
    items = GetMenuItemCount(menu);
    previewChecked = Checked(menu, IDM_PREVIEW);
    PostMessageW(window_, WM_CANCELMODE, 0, 0);
    PostMessageW(popup, WM_KEYDOWN, VK_ESCAPE, 0);
  });
  SendMessageW(window_, kTrayCallback, 1, WM_RBUTTONUP);
  driver.join();
  EXPECT_EQ(items, 10);
  EXPECT_TRUE(previewChecked);
}

// Run by its own test entry under xvfb-run, with Wine's X11 driver.
TEST(RealTray, ShellNotifyIconAddsChangesAndRemovesTheIcon) {
  if (std::getenv("BRINDLE_REAL_TRAY") == nullptr) GTEST_SKIP() << "needs a display";
  HWND owner = CreateWindowExW(0, L"STATIC", L"tray owner", 0, 0, 0, 10, 10, nullptr, nullptr,
                               GetModuleHandleW(nullptr), nullptr);
  ASSERT_NE(owner, nullptr);
  {
    TrayIcon tray;
    ASSERT_TRUE(tray.Add(owner, L"OE Brindle\n1119 > news.example.org:119"));
    EXPECT_TRUE(tray.Shown());
    tray.SetTip(L"OE Brindle");
    tray.Remove();
    EXPECT_FALSE(tray.Shown());
    ASSERT_TRUE(tray.Add(owner, L"OE Brindle"));
  }  // the destructor takes it away
  DestroyWindow(owner);
}

}  // namespace
}  // namespace brindle::ui
