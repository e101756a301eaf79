#!/usr/bin/env bash
# Installs what the project needs to build, test and run, from Debian packages
# only. Idempotent: packages already present are not asked for again, so a
# machine that has everything needs no network at all.
#   scripts/install-deps.sh          build, unit tests, Windows cross-builds
#   scripts/install-deps.sh --e2e    also the real servers of tests/e2e
set -euo pipefail

packages=(
  cmake g++ make pkg-config
  libasio-dev libssl-dev openssl ca-certificates
  googletest libgtest-dev libgmock-dev libbenchmark-dev
  clang libclang-rt-14-dev
  g++-mingw-w64-i686 g++-mingw-w64-x86-64 binutils-mingw-w64-i686 binutils-mingw-w64-x86-64
  wine64
)
if [[ "${1:-}" == "--e2e" ]]; then
  packages+=(inn2 dovecot-pop3d postfix stunnel4 curl python3 procps iproute2)
fi

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
if ((${#missing[@]} == 0)); then
  exit 0
fi

sudo=""
if [[ $(id -u) -ne 0 ]]; then sudo="sudo"; fi
echo "install-deps: installing ${missing[*]}" >&2
export DEBIAN_FRONTEND=noninteractive
# postfix asks questions on install; answer them for a machine that only
# delivers locally.
if printf '%s\n' "${missing[@]}" | grep -qx postfix; then
  echo "postfix postfix/main_mailer_type select Local only" | $sudo debconf-set-selections
  echo "postfix postfix/mailname string localhost" | $sudo debconf-set-selections
fi
$sudo apt-get update -q
$sudo apt-get install -y -q --no-install-recommends "${missing[@]}"
