# shellcheck shell=bash
# Shared by the screenshot scripts: builds one picture-taking program of the
# x86_64 Windows build and runs it under wine64 on a virtual X display, in a
# Wine prefix of its own that is removed at the end.
#   source window_shots.sh TARGET    (a target of src/oewin or src/ui)
# Then `shoot [--desktop] ARGS...` runs the program with ARGS (BMP files go
# under $work, which is Z:$work inside Wine) and `to_png BMP PNG` converts.
# Needs wine64, xvfb-run and xauth.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
BRINDLE_TARGETS=$1 "$root/scripts/build.sh" win-x86_64 >/dev/null
shot=$(find "$root/build/win-x86_64/src" -name "$1.exe" -print -quit)
[ -n "$shot" ] || { echo "window_shots: $1.exe was not built" >&2; exit 1; }
work=$(mktemp -d)
trap '/usr/lib/wine/wineserver64 -w; rm -rf "$work"' EXIT
export WINEPREFIX="$work/prefix" WINEDEBUG=-all

# --desktop: inside a Wine desktop window, so that Wine draws captions and
# frames itself (the virtual display has no window manager to draw them).
shoot() {
  local desktop=()
  if [ "$1" = --desktop ]; then
    desktop=(explorer "/desktop=shot,800x600")
    shift
  fi
  xvfb-run -a -s "-screen 0 1024x768x24" /usr/lib/wine/wine64 "${desktop[@]}" "$shot" "$@"
}

to_png() {
  python3 "$root/scripts/bmp_to_png.py" "$1" "$2"
}
