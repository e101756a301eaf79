// The options window as a user drives it: a second thread sets texts and
// clicks while this thread runs the window's messages; the settings file is
// then compared byte for byte with what the pages should have written.
#include <windows.h>
// after windows.h
#include <commctrl.h>

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <thread>

#include "core/language.h"
#include "core/language_wide.h"
#include "core/message_box.h"
#include "core/settings_file.h"
#include "ui/options_ids.h"
#include "ui/options_window_win32.h"

namespace brindle::ui {
namespace {

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

std::wstring WindowText(HWND w) {
  wchar_t text[512] = L"";
  GetWindowTextW(w, text, 512);
  return text;
}

std::wstring Caption(int16_t language, int offset) {
  return Utf8ToWide(LanguageString(language, offset));
}

class OptionsWindowTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = std::filesystem::temp_directory_path() /
           ("brindle-ui-" + std::to_string(GetCurrentProcessId()) + "-" +
            ::testing::UnitTest::GetInstance()->current_test_info()->name());
    std::filesystem::remove_all(dir_);
    std::filesystem::create_directories(dir_);
    LoadSettings(ReadFile(BRINDLE_FULL_SETTINGS_FILE), base_, {});
    base_.intLanguage = kLangEnglish;
    base_.strIniPath = (dir_ / "OE_Brindle.ini").string();
    store_ = std::make_unique<SettingsStore>(base_);
    applier_ = std::make_unique<SettingsApplier>(*store_, nullptr);
    window_ = std::make_unique<OptionsWindow>(*applier_, windows_);
  }
  void TearDown() override {
    window_.reset();
    std::filesystem::remove_all(dir_);
  }

  // Opens the window, runs `drive` on a second thread, and pumps messages
  // here until it has finished.
  void Drive(const std::function<void(HWND options)>& drive) {
    HWND options = window_->Handle();
    std::atomic<bool> done = false;
    std::thread driver([&] {
      drive(options);
      done = true;
      PostThreadMessageW(uiThread_, WM_NULL, 0, 0);
    });
    MSG m;
    while (!done && GetMessageW(&m, nullptr, 0, 0) > 0) {
      TranslateMessage(&m);
      DispatchMessageW(&m);
    }
    driver.join();
  }

  // From the driving thread: what a click on the tab does.
  static void Tab(HWND options, int tab) {
    HWND tabs = GetDlgItem(options, IDC_TABS);
    SendMessageW(tabs, TCM_SETCURSEL, tab, 0);
    NMHDR n{tabs, IDC_TABS, TCN_SELCHANGE};
    SendMessageW(options, WM_NOTIFY, IDC_TABS, reinterpret_cast<LPARAM>(&n));
  }
  HWND PageWindow(int tab) { return window_->Page(tab)->Handle(); }
  static void Click(HWND dialog, int id) { SendDlgItemMessageW(dialog, id, BM_CLICK, 0, 0); }
  static HWND WaitForWindow(const wchar_t* caption) {
    for (int i = 0; i < 1000; ++i) {
      if (HWND w = FindWindowW(L"#32770", caption)) return w;
      Sleep(10);
    }
    return nullptr;
  }

  std::filesystem::path dir_;
  Settings base_;
  std::unique_ptr<SettingsStore> store_;
  std::unique_ptr<SettingsApplier> applier_;
  LanguageWindows windows_;
  std::unique_ptr<OptionsWindow> window_;
  DWORD uiThread_ = GetCurrentThreadId();
};

TEST_F(OptionsWindowTest, ApplyAndOkWriteWhatThePagesShow) {
  ASSERT_TRUE(window_->Open(nullptr));
  HWND news = PageWindow(0), misc = PageWindow(3), filters = PageWindow(2);
  HWND options1 = window_->Handle();
  Drive([&](HWND options) {
    HWND slider = GetDlgItem(news, IDC_SCROLL);
    for (int i = 0; i < 2; ++i)
      SendMessageW(news, WM_VSCROLL, SB_LINEDOWN, reinterpret_cast<LPARAM>(slider));
    SetDlgItemTextA(news, IDC_ROW + 0, "X-Two");
    SetDlgItemTextA(news, IDC_ROW + 3 * 3 + 2, "body \xb3");
    Tab(options, 3);
    SetDlgItemTextA(misc, IDC_T1, "200");
    Click(options, IDC_APPLY);
  });
  Settings expected = base_;
  expected.newsHeaders[2].HeaderName = "X-Two";
  expected.newsHeaders[5].HeaderBody = "body \xb3";
  expected.intStripRef = 500;
  expected.intAFMin = 0;  // the file's -3 lies outside the page's range
  EXPECT_EQ(ReadFile(base_.strIniPath), SettingsFileText(expected));
  EXPECT_EQ(window_->CurrentTab(), 3u);
  char strip[16];
  GetDlgItemTextA(misc, IDC_T1, strip, sizeof strip);
  EXPECT_STREQ(strip, "500");  // the page shows what was stored

  ASSERT_EQ(window_->Handle(), options1);
  Drive([&](HWND options) {
    Tab(options, 2);
    Click(filters, IDC_R2);
    Click(options, IDOK);
  });
  expected.intCharFiltering = 1;
  EXPECT_EQ(ReadFile(base_.strIniPath), SettingsFileText(expected));
  EXPECT_EQ(window_->Handle(), nullptr);
  EXPECT_EQ(store_->Current()->intCharFiltering, 1);
}

TEST_F(OptionsWindowTest, CancelLeavesSettingsAndFileAlone) {
  ASSERT_TRUE(window_->Open(nullptr));
  HWND misc = PageWindow(3);
  Drive([&](HWND options) {
    SetDlgItemTextA(misc, IDC_T1, "700");
    Click(misc, IDC_C1);
    Click(options, IDCANCEL);
  });
  EXPECT_FALSE(std::filesystem::exists(base_.strIniPath));
  EXPECT_EQ(store_->Current()->intStripRef, base_.intStripRef);
  ASSERT_TRUE(window_->Open(nullptr));  // opened again: the page shows the settings
  char strip[16];
  GetDlgItemTextA(window_->Page(3)->Handle(), IDC_T1, strip, sizeof strip);
  EXPECT_EQ(std::string(strip), std::to_string(base_.intStripRef));
}

TEST_F(OptionsWindowTest, TunnelDialogRefusesBadPortsThenAddsTheTunnel) {
  MessageBoxCapture boxes;
  ASSERT_TRUE(window_->Open(nullptr));
  HWND tunnels = PageWindow(4);
  Drive([&](HWND options) {
    Tab(options, 4);
    PostMessageW(GetDlgItem(tunnels, IDC_B1), BM_CLICK, 0, 0);  // the dialog is modal
    HWND box = WaitForWindow((L"OE Brindle - " + Caption(kLangEnglish, 80)).c_str());
    if (box == nullptr) return;
    SendDlgItemMessageW(box, IDC_TYPE, CB_SETCURSEL, 1, 0);
    SendMessageW(box, WM_COMMAND, MAKEWPARAM(IDC_TYPE, CBN_SELCHANGE), 0);
    SetDlgItemTextA(box, IDC_T1, "pop.example.net");
    SetDlgItemTextA(box, IDC_T2, "70000");
    SetDlgItemTextA(box, IDC_T3, "995");
    Click(box, IDC_C2);
    Click(box, IDOK);  // refused: the box stays
    SetDlgItemTextA(box, IDC_T2, "1111");
    Click(box, IDOK);
    for (int i = 0; i < 500 && IsWindow(box); ++i) Sleep(10);
    Click(options, IDOK);
  });
  ASSERT_EQ(boxes.Boxes().size(), 1u);
  EXPECT_EQ(boxes.Boxes()[0].text, "Port number must be between 1 and 65535");
  EXPECT_EQ(boxes.Boxes()[0].title, "OE Brindle - port number error");
  Settings expected = base_;
  expected.intAFMin = 0;
  expected.tunnels.push_back({"pop.example.net", 1111, 995, false, true, kTypePop3});
  EXPECT_EQ(ReadFile(base_.strIniPath), SettingsFileText(expected));
}

TEST_F(OptionsWindowTest, LanguageMenuChangesEveryOpenWindowAtOnceAndSaves) {
  OptionsWindow second(*applier_, windows_);
  ASSERT_TRUE(window_->Open(nullptr));
  ASSERT_TRUE(second.Open(nullptr, 2));
  LanguageMenu menu(*store_, windows_, [](const Settings& s) { (void)SaveSettings2Ini(s); /* a failure is logged by the writer */ });
  menu.Click(LanguageMenuItem::mnuLangPolski);

  for (OptionsWindow* w : {window_.get(), &second}) {
    EXPECT_EQ(WindowText(w->Handle()),
              L"OE Brindle - " + PlainCaption(LanguageString(kLangPolish, 3)));
    EXPECT_EQ(WindowText(GetDlgItem(w->Handle(), IDC_APPLY)), Caption(kLangPolish, 39));
    EXPECT_EQ(WindowText(GetDlgItem(w->Page(0)->Handle(), IDC_L1)), Caption(kLangPolish, 47));
    EXPECT_EQ(WindowText(GetDlgItem(w->Page(2)->Handle(), IDC_R3)), Caption(kLangPolish, 45));
    wchar_t tab[128] = L"";
    TCITEMW item{};
    item.mask = TCIF_TEXT;
    item.pszText = tab;
    item.cchTextMax = 128;
    SendDlgItemMessageW(w->Handle(), IDC_TABS, TCM_GETITEMW, 4, reinterpret_cast<LPARAM>(&item));
    EXPECT_EQ(std::wstring(tab), PlainCaption(LanguageString(kLangPolish, 8)));
  }
  EXPECT_NE(Caption(kLangPolish, 47), Caption(kLangEnglish, 47));
  EXPECT_NE(ReadFile(base_.strIniPath).find("\r\nLanguage=PL\r\n"), std::string::npos);
}

}  // namespace
}  // namespace brindle::ui
