// Text processing in the client's edit windows: where lines wrap, how quotes
// are compressed, where the reply goes and the cursor starts, and the
// overwrite-mode warning.
#pragma once

#include <string>

#include "ui/option_page.h"

namespace brindle::ui {

class TextProcessingPage : public OptionPage {
 public:
  // The client wraps between 30 and 132 characters; the rewrapping has to
  // agree with it, so the length is kept in the same range.
  static constexpr int16_t kWrapMin = 30, kWrapMax = 132;

  int TitleOffset() const override { return 126; }
  void Load(const Settings& s) override {
    txtWrap = std::to_string(s.intWrap);
    chkHorizontalQCompression = s.intHorizontalQCompression == 1;
    chkVerticalQCompression = s.intVerticalQCompression == 1;
    optBottomPosting = s.intBottomPosting == 1;
    chkCursorOnTop = s.intCoursorOnTop == 1;
    chkOVRWarning = s.intOVRWarning == 1;
  }
  void Apply(Settings& s) const override {
    s.intWrap = ClampedNumber(txtWrap, kWrapMin, kWrapMax);
    s.intHorizontalQCompression = Flag(chkHorizontalQCompression);
    s.intVerticalQCompression = Flag(chkVerticalQCompression);
    s.intBottomPosting = Flag(optBottomPosting);
    s.intCoursorOnTop = Flag(chkCursorOnTop);
    s.intOVRWarning = Flag(chkOVRWarning);
  }

  std::string txtWrap;
  bool chkHorizontalQCompression = false;
  bool chkVerticalQCompression = false;
  bool optBottomPosting = true;  // false: the top-posting button is selected
  bool chkCursorOnTop = false;
  bool chkOVRWarning = false;
};

}  // namespace brindle::ui
