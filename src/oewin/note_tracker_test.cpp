// The tick's decisions against a desktop of fake windows.
#include "oewin/note_tracker.h"

#include <map>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oewin/recording_editor_test.h"

namespace brindle {
namespace {

using ::testing::ElementsAre;

struct FakeNote {
  std::string subject = "Re: x";
  MessageKind kind = MessageKind::kMail;
  EditorLookup::Outcome outcome = EditorLookup::Outcome::kFound;
  EditorKind editorKind = EditorKind::kHtmlDocument;
  std::string text = "sig\r\n----- Original -----\r\nFrom: a\r\n\r\nhello\r\n";
};

class FakeDesktop : public NoteDesktop {
 public:
  WindowId Foreground() override { return front; }
  std::string ClassName(WindowId w) override {
    return notes.count(w) ? std::string(kNoteWindowClass) : others.count(w) ? "Other" : "";
  }
  void Maximise(WindowId w) override { log.push_back("Maximise " + std::to_string(w)); }
  EditorLookup FindEditor(WindowId w) override {
    const FakeNote& note = notes.at(w);
    log.push_back("FindEditor " + std::to_string(w));
    if (note.outcome != EditorLookup::Outcome::kFound) return {note.outcome, nullptr};
    auto editor = std::make_unique<RecordingEditorHandle>(this, note.editorKind);
    editor->text = note.text;
    return {EditorLookup::Outcome::kFound, std::move(editor)};
  }
  std::unique_ptr<QuoteMessage> OpenMessage(WindowId w) override {
    return std::make_unique<PlainQuoteMessage>(notes.at(w).subject, notes.at(w).kind);
  }
  void WriteMailCopies(QuoteMessage&, std::string_view cc, std::string_view bcc) override {
    log.push_back("Copies " + std::string(cc) + "/" + std::string(bcc));
  }
  bool CtrlHeld() override { return false; }

  // Keeps what the tracker did to the editor after the tick has dropped it.
  struct RecordingEditorHandle : testing::RecordingEditor {
    RecordingEditorHandle(FakeDesktop* d, EditorKind k) : RecordingEditor(k), desktop(d) {}
    ~RecordingEditorHandle() override {
      for (auto& c : calls) desktop->log.push_back(c);
      desktop->lastText = text;
    }
    FakeDesktop* desktop;
  };

  WindowId front = 0;
  std::map<WindowId, FakeNote> notes;
  std::map<WindowId, int> others;
  std::vector<std::string> log;
  std::string lastText;
};

class NoteTrackerTest : public ::testing::Test {
 protected:
  void Tick() { tracker_.Tick(settings_); }

  Settings settings_;
  FakeDesktop desktop_;
  NoteTracker tracker_{desktop_};
};

TEST_F(NoteTrackerTest, ReworksANoteInFrontOnceAndFreesItsSlotWhenItCloses) {
  settings_.intAutoMaximize = 1;
  settings_.strCCAddress = "cc@example.org";
  desktop_.notes[7] = {};
  desktop_.front = 7;
  Tick();
  Tick();
  EXPECT_THAT(desktop_.log, ElementsAre("FindEditor 7", "Maximise 7", "Copies cc@example.org/",
                                        "SetText", "SelectAndRemoveMarker", "ClearUndo"));
  EXPECT_NE(desktop_.lastText.find("###kursor###"), std::string::npos);
  EXPECT_TRUE(tracker_.Processed().Contains(7));

  desktop_.notes.erase(7);
  desktop_.front = 0;
  Tick();
  EXPECT_FALSE(tracker_.Processed().Contains(7));
}

TEST_F(NoteTrackerTest, WhatIsLeftAsTheClientMadeIt) {
  // Not a note; a note still building its editor (tried again); a news note
  // (no copies) whose text QuoteFix leaves unchanged; a plain rich-edit note;
  // a note whose document was refused (recorded, untouched).
  settings_.strCCAddress = "cc@example.org";
  desktop_.others[1] = 0;
  desktop_.notes[2].outcome = EditorLookup::Outcome::kNotYet;
  desktop_.notes[3] = {"News subject", MessageKind::kNews};
  desktop_.notes[4].editorKind = EditorKind::kRichEdit;
  desktop_.notes[5].outcome = EditorLookup::Outcome::kFailed;
  for (WindowId w : {1, 2, 2, 3, 4, 5}) {
    desktop_.front = w;
    Tick();
  }
  EXPECT_THAT(desktop_.log,
              ElementsAre("FindEditor 2", "FindEditor 2", "FindEditor 3", "ClearUndo",
                          "FindEditor 4", "Copies cc@example.org/", "ClearUndo", "FindEditor 5"));
  EXPECT_FALSE(tracker_.Processed().Contains(2));
  EXPECT_TRUE(tracker_.Processed().Contains(5));
}

TEST(ProcessedWindows, AFullTableRecordsNoMoreUntilASlotIsFreed) {
  ProcessedWindows table;
  for (WindowId w = 1; w <= ProcessedWindows::kSlots + 1; ++w) table.Add(w);
  EXPECT_TRUE(table.Contains(ProcessedWindows::kSlots));
  EXPECT_FALSE(table.Contains(ProcessedWindows::kSlots + 1));
  table.Purge([](WindowId w) { return w != 50; });
  EXPECT_FALSE(table.Contains(50));
  table.Add(500);
  EXPECT_TRUE(table.Contains(500));
}

}  // namespace
}  // namespace brindle
