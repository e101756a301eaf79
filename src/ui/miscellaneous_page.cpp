#include "ui/miscellaneous_page.h"

#include <algorithm>

namespace brindle::ui {

void MiscellaneousPage::Load(const Settings& s) {
  txtStrip = std::to_string(s.intStripRef);
  chkFQDN = s.intFQDN == 1;
  chkAutoMaximize = s.intAutoMaximize == 1;
  chkClickSecWindow = s.intClickSecWindow == 1;
  chkWinamp = s.intWinamp == 1;
  chkLogoffAfterClose = s.intLogoffAfterClose == 1;
  txtAttachmentPath = s.strAttachmentPath;
  txtCCAddress = s.strCCAddress;
  txtBCCAddress = s.strBCCAddress;
}

void MiscellaneousPage::Apply(Settings& s) const {
  s.intStripRef = ClampedNumber(txtStrip, kStripMin, kStripMax);
  s.intFQDN = Flag(chkFQDN);
  s.intAutoMaximize = Flag(chkAutoMaximize);
  s.intClickSecWindow = Flag(chkClickSecWindow);
  s.intWinamp = Flag(chkWinamp);
  s.intLogoffAfterClose = Flag(chkLogoffAfterClose);
  s.strAttachmentPath = txtAttachmentPath;
  s.strCCAddress = txtCCAddress;
  s.strBCCAddress = txtBCCAddress;
}

void MiscellaneousPage::vscScroll(int step) {
  const int now = ClampedNumber(txtStrip, kStripMin, kStripMax);
  txtStrip = std::to_string(std::clamp(now + step, int{kStripMin}, int{kStripMax}));
}

}  // namespace brindle::ui
