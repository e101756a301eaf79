// The views of every option page, in the order of OptionPages::Pages(),
// followed by the about page, and the captions of their tabs.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <vector>

#include "ui/option_pages.h"
#include "ui/page_view_win32.h"

namespace brindle::ui {

inline constexpr size_t kTabCount = OptionPages::kCount + 1;
// Language string offsets of the tab captions.
inline constexpr std::array<int, kTabCount> kTabCaptions = {13, 9,   4,  58, 8,  5,
                                                            6,  150, 17, 10, 18, 134};

// `refresh` runs a closure on the window's thread (the tunnels' state comes
// from the proxy's thread).
std::vector<std::unique_ptr<PageView>> MakePageViews(OptionPages& pages,
                                                     const SettingsStore& store);

}  // namespace brindle::ui
