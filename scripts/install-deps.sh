#!/usr/bin/env bash
# Installs what the project needs to build, test and run, from Debian packages
# only. Idempotent: packages already present are not asked for again, so a
# machine that has everything needs no network at all.
#   scripts/install-deps.sh          build, unit tests, Windows cross-builds
#   scripts/install-deps.sh --e2e    also the real servers and clients of tests/e2e
#   scripts/install-deps.sh --browser  also Chromium and Node.js for tests/browser
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)

packages=(
  cmake g++ make pkg-config
  libasio-dev libssl-dev openssl ca-certificates
  librestinio-dev libfmt-dev libhttp-parser-dev
  googletest libgtest-dev libgmock-dev libbenchmark-dev
  clang libclang-rt-14-dev
  g++-mingw-w64-i686 g++-mingw-w64-x86-64 binutils-mingw-w64-i686 binutils-mingw-w64-x86-64
  wine64 python3 xvfb xauth
)
e2e=0
if [[ "${1:-}" == "--e2e" ]]; then
  e2e=1
  packages+=(stunnel4)
fi
if [[ "${1:-}" == "--browser" ]]; then
  packages+=(chromium)
  # Node.js from Debian unless one (with its npm) is there already.
  if ! command -v npm >/dev/null; then packages+=(nodejs npm); fi
fi

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if ((${#missing[@]} > 0)); then
  sudo=""
  if [[ $(id -u) -ne 0 ]]; then sudo="sudo"; fi
  echo "install-deps: installing ${missing[*]}" >&2
  export DEBIAN_FRONTEND=noninteractive
  $sudo apt-get update -q
  $sudo apt-get install -y -q --no-install-recommends "${missing[@]}"
fi

# The news server needs a hand with its set-up on a fresh machine; the
# end-to-end run knows how, so it installs its own servers and clients.
if ((e2e)); then
  bash "$root/tests/e2e/run.sh" --install-only
fi
