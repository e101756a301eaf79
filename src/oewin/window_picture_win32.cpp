#include "oewin/window_picture_win32.h"

#include <cstdio>
#include <vector>

namespace brindle {

void DispatchMessagesFor(DWORD ms) {
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

bool SaveWindowPicture(HWND window, WindowPart part, const std::string& path) {
  RECT r;
  if (part == WindowPart::kWhole) {
    GetWindowRect(window, &r);
  } else {
    GetClientRect(window, &r);
    MapWindowPoints(window, nullptr, reinterpret_cast<POINT*>(&r), 2);
  }
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
  DeleteObject(bitmap);
  DeleteDC(memory);
  ReleaseDC(nullptr, screen);

  BITMAPFILEHEADER file{};
  file.bfType = 0x4D42;  // "BM"
  file.bfOffBits = sizeof file + sizeof info;
  file.bfSize = file.bfOffBits + static_cast<DWORD>(pixels.size());
  FILE* out = std::fopen(path.c_str(), "wb");
  if (out == nullptr) return false;
  const bool written = std::fwrite(&file, sizeof file, 1, out) == 1 &&
                       std::fwrite(&info, sizeof info, 1, out) == 1 &&
                       std::fwrite(pixels.data(), 1, pixels.size(), out) == pixels.size();
  return std::fclose(out) == 0 && written;
}

}  // namespace brindle
