#!/usr/bin/env bash
# Builds everything and runs every unit test (the README's test command).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/install-deps.sh"
"$root/scripts/build.sh" debug
cd "$root/build/debug"
ctest --output-on-failure -j"${BRINDLE_JOBS:-$(nproc)}"
