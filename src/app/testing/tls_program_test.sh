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

openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj "/CN=Brindle Private CA" \
  -addext "basicConstraints=critical,CA:TRUE" -addext "keyUsage=critical,keyCertSign,cRLSign" \
  -keyout "$work/ca.key" -out "$work/ca.pem" 2>/dev/null
openssl req -newkey rsa:2048 -nodes -subj "/CN=localhost" -keyout "$work/server.key" \
  -out "$work/server.csr" 2>/dev/null
printf 'subjectAltName=DNS:localhost\nextendedKeyUsage=serverAuth\n' >"$work/server.ext"
openssl x509 -req -in "$work/server.csr" -CA "$work/ca.pem" -CAkey "$work/ca.key" -CAcreateserial \
  -days 2 -extfile "$work/server.ext" -out "$work/server.pem" 2>/dev/null

python3 "$here/tls_pop3_server.py" "$work/server.pem" "$work/server.key" >"$work/port" &
server=$!
for _ in $(seq 100); do [ -s "$work/port" ] && break; sleep 0.1; done
[ -s "$work/port" ] || { echo "the TLS POP3 server did not start"; exit 1; }
export TLS_POP3_PORT=$(cat "$work/port") TLS_POP3_CA="Z:$work/ca.pem"
timeout 300 "$wine" "$test_exe" --gtest_filter=WindowsProgramTest.FetchesMailOverTlsThroughTheRealCompanionAlsoOnceItIsBack
