#include "ui/about_page.h"

namespace brindle::ui {

std::string AboutPage::Version() {
  return BRINDLE_UI_VERSION;
}

}  // namespace brindle::ui
