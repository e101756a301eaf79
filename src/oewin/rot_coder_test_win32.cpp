// The ROT coder window from its resource template, driven from a second
// thread while this one runs the window's messages, as a user's clicks
// arrive.
#include <windows.h>

#include <functional>

#include <gtest/gtest.h>

#include "core/language_wide.h"
#include "oewin/note_settings.h"
#include "oewin/recording_editor_test.h"
#include "oewin/rot_coder.h"
#include "oewin/rot_coder_ids.h"
#include "oewin/rot_coder_model.h"

namespace brindle {
namespace {

DWORD WINAPI RunDriver(void* drive) {
  (*static_cast<const std::function<void()>*>(drive))();
  return 0;
}

// Runs `drive` on a second thread and this thread's messages until it ends.
void DriveFromSecondThread(const std::function<void()>& drive) {
  HANDLE driver =
      CreateThread(nullptr, 0, RunDriver, const_cast<std::function<void()>*>(&drive), 0, nullptr);
  ASSERT_NE(driver, nullptr);
  while (MsgWaitForMultipleObjects(1, &driver, FALSE, INFINITE, QS_ALLINPUT) != WAIT_OBJECT_0) {
    MSG m;
    while (PeekMessageW(&m, nullptr, 0, 0, PM_REMOVE)) {
      TranslateMessage(&m);
      DispatchMessageW(&m);
    }
  }
  CloseHandle(driver);
}

std::string Text(HWND dialog, int item) {
  char buffer[512] = {};
  GetDlgItemTextA(dialog, item, buffer, sizeof buffer);
  return buffer;
}

std::wstring WideText(HWND window) {
  wchar_t buffer[256] = {};
  GetWindowTextW(window, buffer, 256);
  return buffer;
}

void Click(HWND dialog, int item) {
  SendMessageA(GetDlgItem(dialog, item), BM_CLICK, 0, 0);
}

class RotCoderWindow : public ::testing::Test {
 protected:
  void SetUp() override {
    settings_.intLanguage = kLangPolish;
    SetNoteSettingsSource([this] { return std::make_shared<const Settings>(settings_); });
    ProgramRotSelection() = {"Zebra\r\nline 2", editor_};
    OpenRotCoder(nullptr);
    dialog_ = FindWindowW(nullptr, Utf8ToWide("OE Brindle - Koder ROT").c_str());
  }
  void TearDown() override {
    if (IsWindow(dialog_)) DestroyWindow(dialog_);
    SetNoteSettingsSource(nullptr);
    ProgramRotSelection() = {};
  }

  Settings settings_;
  std::shared_ptr<testing::RecordingEditor> editor_ = std::make_shared<testing::RecordingEditor>();
  HWND dialog_ = nullptr;
};

TEST_F(RotCoderWindow, OpensInTheCurrentLanguageWithTheSelectionAndCodes) {
  ASSERT_NE(dialog_, nullptr) << "no window with the Polish caption";
  EXPECT_TRUE(IsWindowVisible(dialog_));
  EXPECT_TRUE(GetWindowLongW(dialog_, GWL_EXSTYLE) & WS_EX_APPWINDOW) << "not in the task bar";
  EXPECT_EQ(WideText(GetDlgItem(dialog_, IDC_ROT_CMDREPLACE)), Utf8ToWide("&Zastąp"));
  EXPECT_EQ(Text(dialog_, IDC_ROT_TEXT1), "Zebra\r\nline 2");

  std::string coded;
  DriveFromSecondThread([&] {
    SetDlgItemTextA(dialog_, IDC_ROT_TXTILE, "1");
    Click(dialog_, IDC_ROT_CMDOK);
    coded = Text(dialog_, IDC_ROT_TEXT2);
  });
  EXPECT_EQ(coded, "Afcsb\r\nmjof 2");
  EXPECT_TRUE(editor_->calls.empty()) << "Code must not touch the document";
}

TEST_F(RotCoderWindow, ReplacesTheDocumentsSelectionAndCancelCloses) {
  ASSERT_NE(dialog_, nullptr);
  editor_->selection = "Zebra";
  std::string shown;
  DriveFromSecondThread([&] {
    SetDlgItemTextA(dialog_, IDC_ROT_TEXT1, "Zebra");
    SetDlgItemTextA(dialog_, IDC_ROT_TXTILE, "27");
    Click(dialog_, IDC_ROT_CMDREPLACE);
    shown = Text(dialog_, IDC_ROT_TEXT2);
    Click(dialog_, IDC_ROT_CMDCANCEL);
  });
  EXPECT_EQ(editor_->calls, std::vector<std::string>{"ReplaceSelection:Afcsb"});
  EXPECT_EQ(shown, "Afcsb");
  EXPECT_EQ(ProgramRotSelection().selectedText, "Afcsb");
  EXPECT_FALSE(IsWindow(dialog_));
}

}  // namespace
}  // namespace brindle
