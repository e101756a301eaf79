// frmMiscellaneous: the References limit and EHLO's domain name for outgoing
// messages, the client-side conveniences (message windows, automatic CC
// and BCC, the attachments folder, the certificate prompt, the caption, the
// identity at close), and the port of the browser view.
#pragma once

#include <string>

#include "ui/option_page.h"

namespace brindle::ui {

class MiscellaneousPage : public OptionPage {
 public:
  static constexpr int16_t kStripMin = 500, kStripMax = 1000;

  int TitleOffset() const override { return 58; }
  void Load(const Settings& s) override;
  // A browser-view port that is not a number 1..65535 is refused, as a
  // tunnel's is: a clamped port would be some other program's.
  std::optional<PageMessage> Validate() const override;
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
  std::string txtWebPort;  // used from the next start: the running view keeps its address
};

}  // namespace brindle::ui
