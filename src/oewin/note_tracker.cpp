#include "oewin/note_tracker.h"

#include "core/log.h"
#include "oewin/quote_fix.h"

namespace brindle {

void NoteTracker::Tick(const Settings& settings) {
  const WindowId front = desktop_.Foreground();
  if (front != 0 && !processed_.Contains(front) && desktop_.ClassName(front) == kNoteWindowClass) {
    if (Rework(front, settings)) processed_.Add(front);
  }
  processed_.Purge([this](WindowId w) { return !desktop_.ClassName(w).empty(); });
}

bool NoteTracker::Rework(WindowId window, const Settings& settings) {
  EditorLookup lookup = desktop_.FindEditor(window);
  // A note whose editor is not there yet is tried again on the next tick; one
  // whose editor refuses its document is left as the client made it.
  if (lookup.outcome == EditorLookup::Outcome::kNotYet) return false;
  if (lookup.outcome == EditorLookup::Outcome::kFailed) {
    log::Warning("a note window's document could not be reached; the window is left as it is");
    return true;
  }
  Editor& editor = *lookup.editor;
  if (settings.intAutoMaximize != 0) desktop_.Maximise(window);

  std::unique_ptr<QuoteMessage> message = desktop_.OpenMessage(window);
  message->Subject();  // a mail note keeps the subject it had when it came up
  if (message->Kind() == MessageKind::kMail)
    desktop_.WriteMailCopies(*message, settings.strCCAddress, settings.strBCCAddress);

  if (editor.Kind() != EditorKind::kRichEdit && settings.intQuoteFix != 0) {
    const std::string text = editor.Text().value_or(std::string());
    if (!text.empty()) {
      QuoteFixOptions options{settings, desktop_.CtrlHeld()};
      const std::string fixed = QuoteFix(*message, text, options);
      // An unchanged text is not written back: in HTML mode that would turn
      // the client's formatting into plain lines for nothing.
      if (!fixed.empty() && fixed != text && editor.SetText(fixed)) editor.SelectAndRemoveMarker();
    }
  }
  editor.ClearUndo();
  return true;
}

}  // namespace brindle
