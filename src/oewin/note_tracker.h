// Note-window tracking: on each tick of the main timer, the note window in
// front is reworked once (maximised when asked, copy addresses filled, the
// quoted reply fixed, the caret put where the user types, the editor's undo
// history cleared) and recorded; windows that have gone free their slots.
//
// The windows are reached through NoteDesktop, so the decisions here run the
// same against the client's windows and against a test's fakes.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "core/settings.h"
#include "oewin/editor.h"
#include "oewin/processed_windows.h"
#include "oewin/quote_fix_message.h"

namespace brindle {

inline constexpr std::string_view kNoteWindowClass = "ATH_Note";

// What asking for a note window's editor gave.
struct EditorLookup {
  enum class Outcome {
    kFound,
    kNotYet,  // no editor window yet: the client is still building the note
    kFailed,  // the editor did not hand out its document (hung, refused)
  };
  Outcome outcome = Outcome::kNotYet;
  std::unique_ptr<Editor> editor;
};

class NoteDesktop {
 public:
  virtual ~NoteDesktop() = default;
  virtual WindowId Foreground() = 0;
  // Empty when the window is gone.
  virtual std::string ClassName(WindowId window) = 0;
  virtual void Maximise(WindowId window) = 0;
  virtual EditorLookup FindEditor(WindowId window) = 0;
  // The note's envelope as a CMailMsg or a CNewsMsg.
  virtual std::unique_ptr<QuoteMessage> OpenMessage(WindowId window) = 0;
  // Mail notes only: the copy fields, filled as if typed. `message` came from
  // OpenMessage.
  virtual void WriteMailCopies(QuoteMessage& message, std::string_view cc,
                               std::string_view bcc) = 0;
  virtual bool CtrlHeld() = 0;
};

class NoteTracker {
 public:
  explicit NoteTracker(NoteDesktop& desktop) : desktop_(desktop) {}

  void Tick(const Settings& settings);
  const ProcessedWindows& Processed() const { return processed_; }

 private:
  // False when the window is to be tried again on a later tick.
  bool Rework(WindowId window, const Settings& settings);

  NoteDesktop& desktop_;
  ProcessedWindows processed_;
};

}  // namespace brindle
