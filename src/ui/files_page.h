// Files locations: the preview's style sheet, the spammer list with the
// address put on filtered messages, and the filter log.
#pragma once

#include <string>

#include "ui/option_page.h"

namespace brindle::ui {

class FilesPage : public OptionPage {
 public:
  int TitleOffset() const override { return 34; }
  void Load(const Settings& s) override {
    txtStyles = s.strStyles;
    txtSpammers = s.strSpammers;
    txtSpammerAddress = s.strSpammerAddress;
    txtLog = s.strLog;
  }
  void Apply(Settings& s) const override {
    s.strStyles = txtStyles;
    s.strSpammers = txtSpammers;
    s.strSpammerAddress = txtSpammerAddress;
    s.strLog = txtLog;
  }

  std::string txtStyles;
  std::string txtSpammers;
  std::string txtSpammerAddress;
  std::string txtLog;
};

}  // namespace brindle::ui
