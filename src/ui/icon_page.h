// The notification-area icon: shown or not, the client minimised to it, and
// what a double click on it does.
#pragma once

#include "ui/option_page.h"

namespace brindle::ui {

class IconPage : public OptionPage {
 public:
  int TitleOffset() const override { return 110; }
  void Load(const Settings& s) override {
    chkTrayIcon = s.intTrayIcon == 1;
    chkMinimizeOE = s.intMinimizeOE == 1;
    chkTrayDoubleClick = s.intTrayDoubleClick == 1;
    loadedDoubleClick_ = s.intTrayDoubleClick;
  }
  void Apply(Settings& s) const override {
    s.intTrayIcon = Flag(chkTrayIcon);
    s.intMinimizeOE = Flag(chkMinimizeOE);
    // A mode the box cannot show stays until the box is ticked.
    if (chkTrayDoubleClick != (loadedDoubleClick_ == 1))
      s.intTrayDoubleClick = Flag(chkTrayDoubleClick);
  }

  bool chkTrayIcon = false;
  bool chkMinimizeOE = false;
  bool chkTrayDoubleClick = false;  // on: opens the main window; off: the client

 private:
  int16_t loadedDoubleClick_ = 0;
};

}  // namespace brindle::ui
