// Note-window tracking against stand-in note windows of the client's classes:
// an envelope of fields, the editor chain ending in an "Internet
// Explorer_Server" that hands out a recording document through the real
// LresultFromObject/ObjectFromLresult path, and a real RichEdit20W.
#include <windows.h>

#include <oleacc.h>
#include <richedit.h>

#include <functional>
#include <map>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oewin/editor_windows_win32.h"
#include "oewin/fake_html_document_test.h"
#include "oewin/note_messages_win32.h"
#include "oewin/note_settings.h"
#include "oewin/note_watch.h"
#include "oewin/rot_shortcut.h"

namespace brindle {
namespace {

using ::testing::ElementsAre;

std::vector<std::pair<int, WPARAM>> g_keys;  // (field id, key) of WM_IME_KEYDOWN
int g_shortcuts = 0;

LRESULT CALLBACK ServerProc(HWND w, UINT m, WPARAM wp, LPARAM lp) {
  static const UINT getObject = RegisterWindowMessageA("WM_HTML_GETOBJECT");
  if (m == getObject) {
    auto* document = reinterpret_cast<IUnknown*>(GetWindowLongPtrA(w, GWLP_USERDATA));
    return document ? LresultFromObject(IID_IHTMLDocument2, wp, document) : 0;
  }
  return DefWindowProcA(w, m, wp, lp);
}

LRESULT CALLBACK FieldProc(HWND w, UINT m, WPARAM wp, LPARAM lp) {
  if (m == WM_IME_KEYDOWN) g_keys.emplace_back(GetDlgCtrlID(w), wp);
  return DefWindowProcA(w, m, wp, lp);
}

LRESULT CALLBACK MainFormProc(HWND w, UINT m, WPARAM wp, LPARAM lp) {
  if (m == RotShortcutMessage()) ++g_shortcuts;
  return DefWindowProcA(w, m, wp, lp);
}

void RegisterStandInClasses() {
  static const bool done = [] {
    const std::pair<const char*, WNDPROC> classes[] = {{"ATH_Note", DefWindowProcA},
                                                       {"OE_Envelope", DefWindowProcA},
                                                       {"ME_DocHost", DefWindowProcA},
                                                       {"##MimeEdit_Server", DefWindowProcA},
                                                       {"Internet Explorer_Server", ServerProc},
                                                       {"StandInField", FieldProc},
                                                       {"ThunderRT6FormDC", MainFormProc}};
    for (const auto& [name, proc] : classes) {
      WNDCLASSA c{};
      c.lpfnWndProc = proc;
      c.hInstance = GetModuleHandleA(nullptr);
      c.lpszClassName = name;
      RegisterClassA(&c);
    }
    return true;
  }();
  (void)done;
}

HWND Child(HWND parent, const char* type, int id = 0, DWORD style = WS_VISIBLE) {
  return CreateWindowExA(0, type, "", WS_CHILD | style, 0, 0, 200, 20, parent,
                         reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr, nullptr);
}

std::string FieldText(HWND envelope, int id) {
  char text[256] = {};
  GetDlgItemTextA(envelope, id, text, sizeof text);
  return text;
}

// A note window as the client builds it; its editor is the HTML chain over
// `document`, or a rich-edit control when there is none.
struct StandInNote {
  explicit StandInNote(IUnknown* document, const char* subject, bool news = false) {
    RegisterStandInClasses();
    note = CreateWindowExA(0, "ATH_Note", "note", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 600, 400,
                           nullptr, nullptr, nullptr, nullptr);
    envelope = Child(note, "OE_Envelope");
    for (int id : {kCCItem, kSubjectItem}) Child(envelope, "StandInField", id);
    Child(envelope, news ? "StandInField" : "Static", kNewsgroupsItem, news ? WS_VISIBLE : 0);
    Child(envelope, "StandInField", kBCCItem, news ? 0 : WS_VISIBLE);
    SetDlgItemTextA(envelope, kSubjectItem, subject);
    HWND host = Child(note, "ME_DocHost");
    if (document != nullptr) {
      server = Child(Child(host, "##MimeEdit_Server"), "Internet Explorer_Server");
      SetWindowLongPtrA(server, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(document));
    } else {
      LoadLibraryA("riched20.dll");
      rich = CreateWindowExW(0, L"RichEdit20W", L"", WS_CHILD | WS_VISIBLE | ES_MULTILINE, 0, 0,
                             400, 200, host, nullptr, nullptr, nullptr);
    }
    SetForegroundWindow(note);
  }
  ~StandInNote() { DestroyWindow(note); }

  HWND note = nullptr, envelope = nullptr, server = nullptr, rich = nullptr;
};

// Runs this thread's messages (the timer among them) until `done`; the bound
// only keeps a broken tracker from hanging the test.
bool PumpUntil(const std::function<bool()>& done) {
  const DWORD start = GetTickCount();
  while (!done()) {
    if (GetTickCount() - start > 30000) return false;
    MsgWaitForMultipleObjects(0, nullptr, FALSE, 100, QS_ALLINPUT);
    MSG m;
    while (PeekMessageA(&m, nullptr, 0, 0, PM_REMOVE)) {
      TranslateMessage(&m);
      DispatchMessageA(&m);
    }
  }
  return true;
}

bool Called(const testing::FakeDocumentState& s, const std::string& call) {
  return std::find(s.calls.begin(), s.calls.end(), call) != s.calls.end();
}

class NoteWindows : public ::testing::Test {
 protected:
  void SetUp() override {
    CoInitialize(nullptr);
    g_keys.clear();
    SetNoteSettingsSource([this] { return std::make_shared<const Settings>(settings_); });
  }
  void TearDown() override {
    SetNoteSettingsSource(nullptr);
    CoUninitialize();
  }
  Settings settings_;
  testing::FakeDocumentState state_;
};

TEST_F(NoteWindows, AMailReplyIsReworkedWithCaretAtTheMarkerCopiesFilledAndUndoCleared) {
  settings_.strCCAddress = "cc@example.org";
  settings_.strBCCAddress = "bcc@example.org";
  settings_.intAutoMaximize = 1;
  state_.bodyText = L"Sig\r\n----- Original Message -----\r\nFrom: a@b\r\n\r\nhello <you>\r\n";
  IUnknown* document = testing::NewFakeHtmlDocument(&state_);
  StandInNote note(document, "Re: hi");
  NoteWindowWatch watch;
  ASSERT_TRUE(PumpUntil([&] { return Called(state_, "DiscardFrom(all)"); }))
      << "the note was not reworked";

  EXPECT_THAT(state_.calls, ElementsAre("put_innerHTML", "item:kursor", "range.moveTo(marker)",
                                        "range.collapse(start)", "range.select",
                                        "marker.put_outerHTML:", "DiscardFrom(all)"));
  // Bottom posting: the caret goes on the empty line between the quote and the signature.
  EXPECT_EQ(std::string(state_.bodyHtml.begin(), state_.bodyHtml.end()),
            "----- Original Message -----<BR>From: a@b<BR>&gt; hello &lt;you&gt;<BR><BR><BR>Sig");
  EXPECT_EQ(FieldText(note.envelope, kCCItem), "cc@example.org");
  EXPECT_EQ(FieldText(note.envelope, kBCCItem), "bcc@example.org");
  EXPECT_EQ(g_keys, (std::vector<std::pair<int, WPARAM>>{
                        {kCCItem, VK_END}, {kCCItem, 186}, {kBCCItem, VK_END}, {kBCCItem, 186}}));
  EXPECT_TRUE(IsZoomed(note.note));
  document->Release();
}

TEST_F(NoteWindows, EnvelopeFieldsAndTheKindOfNote) {
  StandInNote mail(nullptr, "Re: first");
  CMailMsg message(mail.note);
  EXPECT_EQ(message.Subject(), "Re: first");
  SetDlgItemTextA(mail.envelope, kSubjectItem, "Re: typed over");
  EXPECT_EQ(message.Subject(), "Re: first") << "a mail note keeps its first subject";
  EXPECT_FALSE(IsNewsNote(mail.note));

  StandInNote news(nullptr, "Re: n", true);
  EXPECT_TRUE(IsNewsNote(news.note));
  CNewsMsg article(news.note);
  article.SetNewsgroups("pl.test");
  SetDlgItemTextA(news.envelope, kSubjectItem, "Re: changed");
  EXPECT_EQ(article.Subject(), "Re: changed") << "a news note reads its field each time";
  EXPECT_EQ(article.Newsgroups(), "pl.test");

  // A hidden Bcc field gets only the separator key.
  ShowWindow(GetDlgItem(mail.envelope, kBCCItem), SW_HIDE);
  message.SetBCC("x@y");
  EXPECT_EQ(g_keys, (std::vector<std::pair<int, WPARAM>>{{kBCCItem, 186}}));
}

TEST_F(NoteWindows, AnEditorThatHandsOutNoDocumentGivesNone) {
  StandInNote note(nullptr, "Re: x");
  HWND silent = Child(note.note, "Internet Explorer_Server");  // no document behind it
  EXPECT_FALSE(RequestHtmlDocument(silent));
  EXPECT_EQ(OpenEditor({silent, EditorKind::kHtmlDocument}), nullptr);
}

TEST_F(NoteWindows, RichEditAdapterWritesLineEndsItTakesAndPutsTheCaretAtTheMarker) {
  StandInNote note(nullptr, "Re: x");
  const EditorWindow found = FindEditorWindow(note.note);
  ASSERT_EQ(found.window, note.rich);
  ASSERT_EQ(found.kind, EditorKind::kRichEdit);
  std::unique_ptr<Editor> editor = OpenEditor(found);

  ASSERT_TRUE(editor->SetText("ab\r\r\n###kursor###cd\r\nef"));
  ASSERT_TRUE(editor->SelectAndRemoveMarker());
  EXPECT_EQ(editor->Text(), "ab\r\ncd\r\nef");
  CHARRANGE caret{};
  SendMessageW(note.rich, EM_EXGETSEL, 0, reinterpret_cast<LPARAM>(&caret));
  EXPECT_EQ(caret.cpMin, 3);  // "ab" and one line end
  EXPECT_EQ(caret.cpMax, 3);

  SendMessageW(note.rich, EM_SETSEL, 0, 2);
  EXPECT_EQ(editor->SelectionText(), "ab");
  ASSERT_TRUE(editor->ReplaceSelection("no"));
  EXPECT_EQ(editor->Text(), "no\r\ncd\r\nef");
  EXPECT_NE(SendMessageW(note.rich, EM_CANUNDO, 0, 0), 0);
  ASSERT_TRUE(editor->ClearUndo());
  EXPECT_EQ(SendMessageW(note.rich, EM_CANUNDO, 0, 0), 0);
}

TEST_F(NoteWindows, HtmlAdapterReplacesTheSelectionThroughItsTextRange) {
  state_.selection = L"Zebra";
  IUnknown* document = testing::NewFakeHtmlDocument(&state_);
  StandInNote note(document, "Re: x");
  std::unique_ptr<Editor> editor = OpenEditor(FindEditorWindow(note.note));
  ASSERT_NE(editor, nullptr);
  EXPECT_EQ(editor->SelectionText(), "Zebra");
  EXPECT_TRUE(editor->ReplaceSelection("Afcsb\nx"));
  EXPECT_THAT(state_.calls, ElementsAre("range.put_text:Afcsb\r\nx"));
  document->Release();
}

TEST_F(NoteWindows, CompanionLibraryFindsElementsClearsUndoAndReportsShiftF12) {
  HMODULE library = LoadLibraryA(HOOKS_DLL_DIR "\\OE_Brindle.dll");
  ASSERT_NE(library, nullptr);
  using GetElementCall = IDispatch*(WINAPI*)(IDispatch*, BSTR);
  using Call = int(WINAPI*)();
  auto getElement = reinterpret_cast<GetElementCall>(
      reinterpret_cast<void*>(GetProcAddress(library, "GetElement")));
  auto clearUndo =
      reinterpret_cast<Call>(reinterpret_cast<void*>(GetProcAddress(library, "clearUndoHistory")));
  ASSERT_TRUE(getElement && clearUndo);

  state_.bodyHtml = L"a<SPAN id=kursor></SPAN>b";
  IUnknown* document = testing::NewFakeHtmlDocument(&state_);
  BSTR id = SysAllocString(L"kursor");
  IDispatch* element = getElement(reinterpret_cast<IDispatch*>(document), id);
  EXPECT_NE(element, nullptr);
  if (element) element->Release();
  state_.bodyHtml.clear();
  EXPECT_EQ(getElement(reinterpret_cast<IDispatch*>(document), id), nullptr);
  SysFreeString(id);

  StandInNote note(document, "Re: x");
  EXPECT_TRUE(clearUndo());
  EXPECT_TRUE(Called(state_, "DiscardFrom(all)"));

  // Shift+F12 on the client's thread reaches the main form.
  HWND form = CreateWindowExA(0, "ThunderRT6FormDC", "OE Brindle", WS_OVERLAPPEDWINDOW, 0, 0, 10,
                              10, nullptr, nullptr, nullptr, nullptr);
  auto call = [&](const char* name) {
    return reinterpret_cast<Call>(reinterpret_cast<void*>(GetProcAddress(library, name)))();
  };
  call("init");
  ASSERT_TRUE(call("InstallMessageHooks"));
  // Keys as the keyboard sends them, to the note in front.
  g_shortcuts = 0;
  const BYTE strokes[][2] = {{VK_SHIFT, 0},
                             {VK_F12, 0},
                             {VK_F12, 0},
                             {VK_F12, KEYEVENTF_KEYUP},
                             {VK_SHIFT, KEYEVENTF_KEYUP},
                             {VK_F12, 0},
                             {VK_F12, KEYEVENTF_KEYUP}};
  for (const auto& s : strokes) keybd_event(s[0], 0, s[1], 0);
  EXPECT_TRUE(PumpUntil([] { return g_shortcuts > 0; })) << "the main form heard nothing";
  call("UninstallMessageHooks");
  EXPECT_EQ(g_shortcuts, 1) << "a held key or F12 without Shift was reported too";
  DestroyWindow(form);
  FreeLibrary(library);
  document->Release();
}

}  // namespace
}  // namespace brindle
