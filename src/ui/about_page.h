// The about page: the program's version and its notice; nothing to edit.
#pragma once

#include <string>

namespace brindle::ui {

struct AboutPage {
  static constexpr int kTitle = 59;
  static constexpr int kVersionCaption = 60;  // "Version"
  static constexpr int kNotice = 139;
  // "major.minor.patch" of this build.
  static std::string Version();
};

}  // namespace brindle::ui
