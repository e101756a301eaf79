#!/usr/bin/env bash
# Configures and builds one flavour of the project into build/<flavour>.
#   scripts/build.sh [debug|release|asan|win-i686|win-x86_64|fuzz|bench] [extra cmake args...]
# BRINDLE_TARGETS="a b" builds only those targets.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
flavour=${1:-debug}
shift || true
jobs=${BRINDLE_JOBS:-$(nproc)}
args=()
case "$flavour" in
  debug) args=(-DCMAKE_BUILD_TYPE=Debug) ;;
  release) args=(-DCMAKE_BUILD_TYPE=Release -DBRINDLE_TESTS=OFF) ;;
  asan) args=(-DCMAKE_BUILD_TYPE=Debug -DBRINDLE_SANITIZE=address,undefined) ;;
  win-i686) args=(-DCMAKE_BUILD_TYPE=Release -DBRINDLE_TESTS=OFF
                  -DCMAKE_TOOLCHAIN_FILE="$root/cmake/toolchain-mingw-i686.cmake") ;;
  win-x86_64) args=(-DCMAKE_BUILD_TYPE=Release
                    -DCMAKE_TOOLCHAIN_FILE="$root/cmake/toolchain-mingw-x86_64.cmake") ;;
  fuzz) args=(-DCMAKE_BUILD_TYPE=RelWithDebInfo -DBRINDLE_TESTS=OFF -DBRINDLE_FUZZ=ON
              -DBRINDLE_SANITIZE=address,undefined
              -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++) ;;
  bench) args=(-DCMAKE_BUILD_TYPE=Release -DBRINDLE_TESTS=OFF -DBRINDLE_BENCH=ON) ;;
  *) echo "build.sh: unknown flavour '$flavour'" >&2; exit 2 ;;
esac
cmake -S "$root" -B "$root/build/$flavour" "${args[@]}" "$@" >/dev/null
targets=()
for t in ${BRINDLE_TARGETS:-}; do targets+=(--target "$t"); done
cmake --build "$root/build/$flavour" -j"$jobs" "${targets[@]}"
