// The one view the note-window code has of a message editor: the client's
// HTML document or a plain rich-edit control. Quote fixing, the caret
// placement, the undo clearing and the ROT coder's replace talk only to this,
// so they work the same on either editor (and on a recording fake in tests).
//
// Texts are bytes of the system's code page with CR LF line ends, as the
// quote-fixing routines take them; each adapter converts to what its editor
// holds.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace brindle {

enum class EditorKind { kHtmlDocument, kRichEdit };

class Editor {
 public:
  virtual ~Editor() = default;

  virtual EditorKind Kind() const = 0;
  // The editor's whole text; nothing when it cannot be read.
  virtual std::optional<std::string> Text() = 0;
  // Replaces the whole text. It may hold the cursor marker, which the editor
  // keeps in a form SelectAndRemoveMarker finds again.
  virtual bool SetText(std::string_view text) = 0;
  // Puts the caret where the marker was and removes the marker.
  virtual bool SelectAndRemoveMarker() = 0;
  // The selected text; empty when nothing is selected, nothing on failure.
  virtual std::optional<std::string> SelectionText() = 0;
  virtual bool ReplaceSelection(std::string_view text) = 0;
  // So that Ctrl-Z does not bring back the client's own version of the text.
  virtual bool ClearUndo() = 0;
};

}  // namespace brindle
