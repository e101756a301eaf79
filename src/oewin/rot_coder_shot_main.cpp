// rot_coder_shot LANGUAGE OUT.bmp: opens the ROT coder in one language with a
// sample text coded, and saves the window as it shows on screen, for the
// pictures in docs/ (scripts/screenshot-rot-coder.sh).
#include <windows.h>

#include <cstdio>
#include <memory>

#include "core/language.h"
#include "oewin/note_settings.h"
#include "oewin/rot_coder.h"
#include "oewin/rot_coder_ids.h"
#include "oewin/rot_coder_model.h"
#include "oewin/window_picture_win32.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: rot_coder_shot LANGUAGE OUT.bmp\n");
    return 2;
  }
  const auto base = brindle::BaseFromTwoLetterCode(argv[1]);
  if (!base) {
    std::fprintf(stderr, "rot_coder_shot: unknown language '%s'\n", argv[1]);
    return 2;
  }
  brindle::Settings settings;
  settings.intLanguage = *base;
  brindle::SetNoteSettingsSource(
      [&] { return std::make_shared<const brindle::Settings>(settings); });
  brindle::ProgramRotSelection().selectedText =
      "Why did the chicken cross the road?\r\nTo get to the other side.";
  brindle::OpenRotCoder(nullptr);
  HWND coder = GetForegroundWindow();
  SendMessageW(coder, WM_COMMAND, IDC_ROT_CMDOK, 0);
  brindle::DispatchMessagesFor(1500);
  return brindle::SaveWindowPicture(coder, brindle::WindowPart::kWhole, argv[2]) ? 0 : 1;
}
