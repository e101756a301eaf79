// frmMiscellaneous: the References limit and EHLO's domain name for outgoing
// messages, and the client-side conveniences (message windows, automatic CC
// and BCC, the attachments folder, the certificate prompt, the caption, the
// identity at close).
#pragma once

#include <string>

#include "ui/option_page.h"

namespace brindle::ui {

class MiscellaneousPage : public OptionPage {
 public:
  static constexpr int16_t kStripMin = 500, kStripMax = 1000;

  int TitleOffset() const override { return 58; }
  void Load(const Settings& s) override;
  void Apply(Settings& s) const override;

  // The spin slider beside txtStrip steps the number by one within the limits.
  void vscScroll(int step);

  std::string txtStrip;  // StripReferences, clamped to 500..1000 by Apply
  bool chkFQDN = false;
  bool chkAutoMaximize = false;
  bool chkClickSecWindow = false;
  bool chkWinamp = false;
  bool chkLogoffAfterClose = false;
  std::string txtAttachmentPath;
  std::string txtCCAddress;
  std::string txtBCCAddress;
};

}  // namespace brindle::ui
