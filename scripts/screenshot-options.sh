#!/usr/bin/env bash
# Pictures of every tab of the options window in English and Polish, as Wine
# draws them under a virtual X display: docs/options/<lang>-NN.png.
# Needs the x86_64 Windows build, wine64, xvfb-run and xauth.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
BRINDLE_TARGETS=options_shot "$root/scripts/build.sh" win-x86_64 >/dev/null
shot="$root/build/win-x86_64/src/ui/options_shot.exe"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export WINEPREFIX="$work/prefix" WINEDEBUG=-all
mkdir -p "$root/docs/options"
for lang in en pl; do
  mkdir -p "$work/$lang"
  xvfb-run -a -s "-screen 0 1024x768x24" /usr/lib/wine/wine64 "$shot" "$lang" "Z:$work/$lang"
  for bmp in "$work/$lang"/*.bmp; do
    n=$(basename "$bmp" .bmp)
    python3 "$root/scripts/bmp_to_png.py" "$bmp" "$root/docs/options/$lang-$n.png"
  done
  echo "docs/options/$lang-*.png"
done
