#!/usr/bin/env bash
# Certificates for the tests and benchmarks that run TLS servers on loopback,
# made with the openssl tool, valid for two days, keys unencrypted:
#   test-certificates.sh [--rsa] ca CERT KEY NAME
#       a certificate authority named "NAME";
#   test-certificates.sh [--rsa] server CERT KEY CA_CERT CA_KEY HOST...
#       a server certificate for each HOST (a DNS name or an IPv4 address),
#       issued by that authority.
# Keys are P-256 unless --rsa asks for RSA 2048.
set -euo pipefail
key=(-newkey ec -pkeyopt ec_paramgen_curve:P-256)
if [ "${1:-}" = --rsa ]; then
  key=(-newkey rsa:2048)
  shift
fi
usage() {
  echo "usage: test-certificates.sh [--rsa] ca CERT KEY NAME" >&2
  echo "       test-certificates.sh [--rsa] server CERT KEY CA_CERT CA_KEY HOST..." >&2
  exit 2
}
case "${1:-}" in
  ca)
    [ $# -eq 4 ] || usage
    openssl req -x509 "${key[@]}" -nodes -days 2 -subj "/CN=$4" \
      -addext "basicConstraints=critical,CA:TRUE" -addext "keyUsage=critical,keyCertSign,cRLSign" \
      -keyout "$3" -out "$2" 2>/dev/null
    ;;
  server)
    [ $# -ge 6 ] || usage
    cert=$2 cert_key=$3 ca_cert=$4 ca_key=$5
    shift 5
    names=()
    for host in "$@"; do
      if [[ $host =~ ^[0-9]+(\.[0-9]+){3}$ ]]; then names+=("IP:$host"); else names+=("DNS:$host"); fi
    done
    scratch=$(mktemp -d)
    trap 'rm -rf "$scratch"' EXIT
    openssl req "${key[@]}" -nodes -subj "/CN=$1" -keyout "$cert_key" -out "$scratch/csr" 2>/dev/null
    printf 'subjectAltName=%s\nextendedKeyUsage=serverAuth\n' "$(IFS=,; echo "${names[*]}")" \
      >"$scratch/ext"
    openssl x509 -req -in "$scratch/csr" -CA "$ca_cert" -CAkey "$ca_key" -CAcreateserial \
      -CAserial "$scratch/serial" -days 2 -extfile "$scratch/ext" -out "$cert" 2>/dev/null
    ;;
  *) usage ;;
esac
