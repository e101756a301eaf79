// frmWrotki: the attribution line written above a quoted reply, one template
// for news and one for mails, each used only while its switch is on.
#pragma once

#include <array>
#include <string>

#include "ui/option_page.h"

namespace brindle::ui {

class QuoteHeadersPage : public OptionPage {
 public:
  // The legend of placeholders shown beside the templates, in order.
  static constexpr std::array<int, 10> kLegend = {114, 115, 116, 118, 119, 120, 121, 122, 123, 117};

  int TitleOffset() const override { return 113; }
  void Load(const Settings& s) override {
    chkWrotkaNews = s.intWrotkaNews == 1;
    txtWrotkaNews = s.strWrotkaNews;
    chkWrotkaMail = s.intWrotkaMail == 1;
    txtWrotkaMail = s.strWrotkaMail;
  }
  void Apply(Settings& s) const override {
    s.intWrotkaNews = Flag(chkWrotkaNews);
    s.strWrotkaNews = txtWrotkaNews;
    s.intWrotkaMail = Flag(chkWrotkaMail);
    s.strWrotkaMail = txtWrotkaMail;
  }

  bool chkWrotkaNews = false;
  std::string txtWrotkaNews;
  bool chkWrotkaMail = false;
  std::string txtWrotkaMail;
};

}  // namespace brindle::ui
