// Pictures of the program's own windows as they show on screen, for docs/:
// the picture-taking programs open a window, let it draw, and save it.
#pragma once

#include <windows.h>

#include <string>

namespace brindle {

// Dispatches the thread's messages for `ms` milliseconds, so that a window
// just opened has painted itself before it is saved.
void DispatchMessagesFor(DWORD ms);

enum class WindowPart { kWhole, kClientArea };

// Saves what the screen shows of `window` (with its frame, or its client
// area alone) as a 24-bit BMP file; false when the file cannot be written.
bool SaveWindowPicture(HWND window, WindowPart part, const std::string& path);

}  // namespace brindle
