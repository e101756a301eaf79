#include "oewin/rot_coder_model.h"

#include "oewin/rot.h"

namespace brindle {

RotSelection& ProgramRotSelection() {
  static RotSelection selection;
  return selection;
}

std::string RotCode(std::string_view text1, std::string_view shiftText) {
  return rotate(text1, ShiftFromText(shiftText));
}

std::optional<std::string> RotReplace(RotSelection& selection, std::string_view text1,
                                      std::string_view shiftText) {
  if (!selection.currentDocument) return std::nullopt;
  const std::optional<std::string> selected = selection.currentDocument->SelectionText();
  if (!selected || selected->empty()) return std::nullopt;
  const std::optional<int32_t> shift = RoundedShiftFromText(shiftText);
  if (!shift) return std::nullopt;
  std::string result = rotate(text1, *shift);
  if (!selection.currentDocument->ReplaceSelection(result)) return std::nullopt;
  selection.selectedText = result;
  return result;
}

}  // namespace brindle
