#!/usr/bin/env bash
# Pictures of every tab of the options window in English and Polish, as Wine
# draws them under a virtual X display: docs/options/<lang>-NN.png.
# shellcheck source=window_shots.sh
source "$(dirname "$0")/window_shots.sh" options_shot
mkdir -p "$root/docs/options"
for lang in en pl; do
  mkdir -p "$work/$lang"
  shoot "$lang" "Z:$work/$lang"
  for bmp in "$work/$lang"/*.bmp; do
    to_png "$bmp" "$root/docs/options/$lang-$(basename "$bmp" .bmp).png"
  done
  echo "docs/options/$lang-*.png"
done
