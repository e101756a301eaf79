#!/usr/bin/env bash
# Pictures of the ROT coder window in English and Polish, as Wine draws it
# under a virtual X display: docs/rot-coder-en.png, docs/rot-coder-pl.png.
# shellcheck source=window_shots.sh
source "$(dirname "$0")/window_shots.sh" rot_coder_shot
mkdir -p "$root/docs"
for lang in en pl; do
  shoot --desktop "$lang" "$work/$lang.bmp"
  to_png "$work/$lang.bmp" "$root/docs/rot-coder-$lang.png"
  echo "docs/rot-coder-$lang.png"
done
