#!/usr/bin/env bash
# Runs the Windows program's TLS test under Wine: makes a private CA and a
# server certificate, starts the TLS POP3 server on loopback (killed by its
# PID at the end) and runs the one test that needs it.
#   tls_program_test.sh APP_TEST_EXE WINE
set -euo pipefail
test_exe=$1 wine=$2
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d "${TMPDIR:-/tmp}/tls-program.XXXXXX")
server=
cleanup() {
  if [ -n "$server" ]; then kill "$server" 2>/dev/null || true; wait "$server" 2>/dev/null || true; fi
  rm -rf "$work"
}
trap cleanup EXIT

certificates=$here/../../../scripts/test-certificates.sh
"$certificates" --rsa ca "$work/ca.pem" "$work/ca.key" "Brindle Private CA"
"$certificates" --rsa server "$work/server.pem" "$work/server.key" "$work/ca.pem" "$work/ca.key" \
  localhost

python3 "$here/tls_pop3_server.py" "$work/server.pem" "$work/server.key" >"$work/port" &
server=$!
for _ in $(seq 100); do [ -s "$work/port" ] && break; sleep 0.1; done
[ -s "$work/port" ] || { echo "the TLS POP3 server did not start"; exit 1; }
export TLS_POP3_PORT=$(cat "$work/port") TLS_POP3_CA="Z:$work/ca.pem"
timeout 300 "$wine" "$test_exe" --gtest_filter=WindowsProgramTest.FetchesMailOverTlsThroughTheRealCompanionAlsoOnceItIsBack
