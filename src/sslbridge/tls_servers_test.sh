#!/usr/bin/env bash
# Runs the Windows companion tests under Wine against native OpenSSL servers
# on loopback: makes the certificates, starts one `openssl s_server -rev` per
# case, hands ports and files to the test program, and kills every server by
# its PID at the end.
#   tls_servers_test.sh TEST_EXE WINE WINEPREFIX
set -euo pipefail
test_exe=$1 wine=$2
export WINEPREFIX=$3 WINEDEBUG=${WINEDEBUG:--all}
work=$(mktemp -d "${TMPDIR:-/tmp}/tls-servers.XXXXXX")
pids=()
cleanup() {
  local p
  for p in "${pids[@]}"; do kill "$p" 2>/dev/null || true; done
  for p in "${pids[@]}"; do wait "$p" 2>/dev/null || true; done
  rm -rf "$work"
}
trap cleanup EXIT

certificates=$(dirname "$0")/../../scripts/test-certificates.sh
ca() {  # name
  "$certificates" --rsa ca "$work/$1.pem" "$work/$1.key" "Brindle $1"
}
leaf() {  # name ca dns-name
  "$certificates" --rsa server "$work/$1.pem" "$work/$1.key" "$work/$2.pem" "$work/$2.key" "$3"
}
serve() {  # name -> sets the variable $port
  timeout 600 openssl s_server -rev -accept 127.0.0.1:0 -cert "$work/$1.pem" \
    -key "$work/$1.key" >"$work/$1.out" 2>&1 &
  pids+=($!)
  for _ in $(seq 100); do
    # Its output file may not exist yet, and a failing sed would end the script.
    port=$(sed -n 's/^ACCEPT .*:\([0-9]*\)$/\1/p' "$work/$1.out" 2>/dev/null || true)
    [ -n "$port" ] && return 0
    sleep 0.1
  done
  echo "s_server for $1 did not start"; cat "$work/$1.out"; exit 1
}

ca trusted; ca private; ca unknown
leaf good trusted localhost
leaf other trusted news.example.org
leaf priv private localhost
leaf stranger unknown localhost

serve good; export TLS_TEST_GOOD_PORT=$port
serve other; export TLS_TEST_OTHER_NAME_PORT=$port
serve priv; export TLS_TEST_PRIVATE_CA_PORT=$port
serve stranger; export TLS_TEST_UNKNOWN_CA_PORT=$port
export TLS_TEST_TRUSTED_CA="Z:$work/trusted.pem" TLS_TEST_PRIVATE_CA="Z:$work/private.pem"
export WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-mscoree,mshtml=}
timeout 600 "$wine" "$test_exe"
