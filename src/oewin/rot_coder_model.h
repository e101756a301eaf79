// What the ROT coder window does, apart from the window: the Code button
// codes Text1 into Text2 with the shift held in range; Replace codes Text1
// and puts the result in place of the selection in the document the text was
// taken from.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "oewin/editor.h"

namespace brindle {

// The selection the ROT shortcut took, shared by the shortcut, the coder
// window and its Replace, on the client's thread.
struct RotSelection {
  std::string selectedText;
  // The editor of the window whose selection was taken; none when the
  // window in front had no editor.
  std::shared_ptr<Editor> currentDocument;
};
RotSelection& ProgramRotSelection();

// cmdOK: Text2 for Text1 and the shift text.
std::string RotCode(std::string_view text1, std::string_view shiftText);

// cmdReplace: the coded text, written over the document's selection and kept
// as the selected text; nothing (and no change anywhere) without a document,
// with an empty or unreadable selection, or a shift too large to round.
std::optional<std::string> RotReplace(RotSelection& selection, std::string_view text1,
                                      std::string_view shiftText);

}  // namespace brindle
