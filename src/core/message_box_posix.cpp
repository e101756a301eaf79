#include <cstdio>
#include <string>

#include "core/event_log.h"
#include "core/message_box.h"

namespace brindle {

// Without a desktop to show a dialog on, a box is one report under its title:
// the person running the program sees it on standard error, the
// administrator finds it in the system log.
MessageBoxSink PlatformMessageBoxPresenter() {
  return [](std::string_view text, std::string_view title, BoxIcon icon) {
    std::string entry = "[";
    entry.append(title).append("] ").append(text);
    std::fprintf(stderr, "%s: %s\n", event_log::kSourceName, entry.c_str());
    event_log::WriteSystemLog(icon == BoxIcon::kInformation   ? log::Level::kInfo
                              : icon == BoxIcon::kExclamation ? log::Level::kWarning
                                                              : log::Level::kError,
                              entry);
  };
}

}  // namespace brindle
