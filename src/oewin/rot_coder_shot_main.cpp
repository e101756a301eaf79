// rot_coder_shot LANGUAGE OUT.bmp: opens the ROT coder in one language with a
// sample text coded, and saves the window as it shows on screen, for the
// pictures in docs/ (scripts/screenshot-rot-coder.sh).
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "core/language.h"
#include "oewin/note_settings.h"
#include "oewin/rot_coder.h"
#include "oewin/rot_coder_ids.h"
#include "oewin/rot_coder_model.h"

namespace {

void RunMessagesFor(DWORD ms) {
  const DWORD start = GetTickCount();
  while (GetTickCount() - start < ms) {
    MSG m;
    while (PeekMessageW(&m, nullptr, 0, 0, PM_REMOVE)) {
      TranslateMessage(&m);
      DispatchMessageW(&m);
    }
    Sleep(20);
  }
}

bool SaveBmp(HWND window, const char* path) {
  RECT r;
  GetWindowRect(window, &r);
  const int w = r.right - r.left, h = r.bottom - r.top;
  HDC screen = GetDC(nullptr);
  HDC memory = CreateCompatibleDC(screen);
  HBITMAP bitmap = CreateCompatibleBitmap(screen, w, h);
  SelectObject(memory, bitmap);
  BitBlt(memory, 0, 0, w, h, screen, r.left, r.top, SRCCOPY);
  BITMAPINFOHEADER info{};
  info.biSize = sizeof info;
  info.biWidth = w;
  info.biHeight = h;
  info.biPlanes = 1;
  info.biBitCount = 24;
  const DWORD stride = ((w * 3) + 3) & ~3u;
  std::vector<char> pixels(stride * h);
  GetDIBits(memory, bitmap, 0, h, pixels.data(), reinterpret_cast<BITMAPINFO*>(&info),
            DIB_RGB_COLORS);
  BITMAPFILEHEADER file{};
  file.bfType = 0x4D42;
  file.bfOffBits = sizeof file + sizeof info;
  file.bfSize = file.bfOffBits + static_cast<DWORD>(pixels.size());
  FILE* out = std::fopen(path, "wb");
  if (out == nullptr) return false;
  std::fwrite(&file, sizeof file, 1, out);
  std::fwrite(&info, sizeof info, 1, out);
  std::fwrite(pixels.data(), 1, pixels.size(), out);
  std::fclose(out);
  DeleteObject(bitmap);
  DeleteDC(memory);
  ReleaseDC(nullptr, screen);
  return true;
}

}  // namespace

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
  RunMessagesFor(1500);
  return SaveBmp(coder, argv[2]) ? 0 : 1;
}
