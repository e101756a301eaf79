#!/usr/bin/env bash
# Pictures of the ROT coder window in English and Polish, as Wine draws it
# under a virtual X display: docs/rot-coder-en.png, docs/rot-coder-pl.png.
# Needs the x86_64 Windows build, wine64, xvfb-run and xauth.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
BRINDLE_TARGETS=rot_coder_shot "$root/scripts/build.sh" win-x86_64 >/dev/null
shot="$root/build/win-x86_64/src/oewin/rot_coder_shot.exe"
work=$(mktemp -d)
trap '/usr/lib/wine/wineserver64 -w; rm -rf "$work"' EXIT
export WINEPREFIX="$work/prefix" WINEDEBUG=-all
mkdir -p "$root/docs"
for lang in en pl; do
  # Inside a Wine desktop window, so that Wine draws the caption and frame
  # itself (the virtual display has no window manager to draw them).
  xvfb-run -a -s "-screen 0 1024x768x24" /usr/lib/wine/wine64 explorer /desktop=shot,800x600 \
    "$shot" "$lang" "$work/$lang.bmp"
  python3 "$root/scripts/bmp_to_png.py" "$work/$lang.bmp" "$root/docs/rot-coder-$lang.png"
  echo "docs/rot-coder-$lang.png"
done
