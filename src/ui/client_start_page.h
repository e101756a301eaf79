// How the client's window is shown when the program launches it.
#pragma once

#include <optional>

#include "ui/option_page.h"

namespace brindle::ui {

class ClientStartPage : public OptionPage {
 public:
  enum class WindowState { optNormal, optMinimized, optMaximized };

  int TitleOffset() const override { return 52; }
  void Load(const Settings& s) override {
    state.reset();
    if (s.intOEWindowStartupState >= 0 && s.intOEWindowStartupState <= 2)
      state = static_cast<WindowState>(s.intOEWindowStartupState);
  }
  void Apply(Settings& s) const override {
    if (state) s.intOEWindowStartupState = static_cast<int16_t>(*state);
  }

  // None while the file's mode is one this page has no button for: it stays
  // as it is until the user picks one.
  std::optional<WindowState> state;
};

}  // namespace brindle::ui
