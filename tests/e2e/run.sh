#!/usr/bin/env bash
# End-to-end run: real news, POP3 and SMTP servers from Debian on free
# loopback ports, real clients (Python's nntplib/poplib/smtplib and curl)
# talking to them through the program's tunnels, plain and over TLS through
# the companion. Bounded in time; stops its servers and removes its files.
#
# Environment:
#   BRINDLE_BIN_DIR   folder holding brindle and SslBridge (default: build them
#                     into build/e2e)
#   E2E_TIME_LIMIT    seconds for the client run (default 180)
#   E2E_KEEP=1        keep the work folder for inspection
# With --install-only it installs the servers and clients it needs and stops.
set -euo pipefail

HERE=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
ROOT=$(cd "$HERE/../.." && pwd)
PACKAGES=(inn2 dovecot-pop3d exim4-daemon-light curl openssl python3)
PYTHON=/usr/bin/python3
[ -x "$PYTHON" ] || PYTHON=python3

say() { echo "e2e: $*"; }

ensure_packages() {
  local missing=() p
  for p in "${PACKAGES[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "ok installed" || missing+=("$p")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  say "installing ${missing[*]}"
  local log=${TMPDIR:-/tmp}/brindle-e2e-apt.log
  # inn2's set-up stops when the machine's own name has no domain; the run
  # uses its own configuration anyway, so give the packaged one a domain and
  # finish the set-up.
  DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends \
    -o Dpkg::Options::=--force-confdef -o Dpkg::Options::=--force-confold "${missing[@]}" \
    </dev/null >"$log" 2>&1 || {
    [ -f /etc/news/inn.conf ] && sed -i 's/^#\?domain:.*/domain: e2e.test/' /etc/news/inn.conf
    DEBIAN_FRONTEND=noninteractive dpkg --configure -a --force-confdef --force-confold \
      </dev/null >>"$log" 2>&1 || true
  }
  for p in "${missing[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "ok installed" ||
      { say "package $p could not be installed"; exit 1; }
  done
}

find_binaries() {
  if [ -n "${BRINDLE_BIN_DIR:-}" ]; then
    BIN=$BRINDLE_BIN_DIR
  else
    BIN=$ROOT/build/e2e/bin
    say "building brindle and SslBridge in build/e2e"
    cmake -S "$ROOT" -B "$ROOT/build/e2e" -DCMAKE_BUILD_TYPE=Release -DBRINDLE_TESTS=OFF >/dev/null
    cmake --build "$ROOT/build/e2e" -j2 --target brindle SslBridge >/dev/null
  fi
  for f in brindle SslBridge; do
    [ -x "$BIN/$f" ] || { say "$BIN/$f is missing"; exit 1; }
  done
}

cleanup() {
  local rc=$?
  set +e
  [ -n "${BRINDLE_PID:-}" ] && kill "$BRINDLE_PID" 2>/dev/null
  stop_servers
  if [ "$rc" -ne 0 ] && [ -n "${WORK:-}" ]; then
    for f in brindle.log dovecot.log inn.log exim.log; do
      [ -s "$WORK/$f" ] && { echo "--- $f (last lines)"; tail -n 15 "$WORK/$f"; }
    done
  fi
  if [ "${E2E_KEEP:-0}" = 1 ]; then say "work folder kept: $WORK"; else rm -rf "$WORK"; fi
  exit "$rc"
}

# A signed mail as a mail client receives it, waiting in the POP3 mailbox.
place_signed_mail() {
  SIGNED_SUBJECT="e2e signed $$"
  cat >"$WORK/mail/e2e/new/1000000000.e2e.signed" <<MAIL
From: Signer <signer@e2e.test>
To: e2e@e2e.test
Subject: $SIGNED_SUBJECT
MIME-Version: 1.0
Content-Type: multipart/signed; protocol="application/pgp-signature"; micalg=pgp-sha256; boundary="SIG-BOUNDARY"

--SIG-BOUNDARY
Content-Type: text/plain; charset=us-ascii

This is the signed part.
--SIG-BOUNDARY
Content-Type: application/pgp-signature; name="signature.asc"

-----BEGIN PGP SIGNATURE-----
iQEzBAEBCAAdFiEE0000000000000000000000000000000000000000AAoJEAAAAAAAAAAA
-----END PGP SIGNATURE-----
--SIG-BOUNDARY--
MAIL
  chown -R mail:mail "$WORK/mail"
}

write_settings() {
  local s=$WORK/settings
  mkdir -p "$s"
  TUNNEL_NNTP=$(free_port) TUNNEL_POP3=$(free_port) TUNNEL_POP3S=$(free_port)
  TUNNEL_SMTP=$(free_port) TUNNEL_SMTPS=$(free_port) TUNNEL_SMTP_STARTTLS=$(free_port)
  E2E_XNEWSREADER="OE Brindle E2E News"
  E2E_XMAILER="OE Brindle E2E Mail"
  # The settings file is the program's own format: CR LF lines.
  sed 's/$/\r/' >"$s/OE_Brindle.ini" <<INI
[Miscellaneous]
ISO=0
ChangeXNewsreader=1
XNewsreader=$E2E_XNEWSREADER
XMailer=$E2E_XMAILER
Language=EN
[NNTPServer]
ServerName=127.0.0.1
SrcPort=$TUNNEL_NNTP
DestPort=$INN_PORT
AutoStart=1
[POP3Server]
ServerName=127.0.0.1
SrcPort=$TUNNEL_POP3
DestPort=$POP3_PORT
AutoStart=1
SSL=0
[POP3Server]
ServerName=localhost
SrcPort=$TUNNEL_POP3S
DestPort=$POP3S_PORT
AutoStart=1
SSL=1
[SMTPServer]
ServerName=127.0.0.1
SrcPort=$TUNNEL_SMTP
DestPort=$SMTP_PORT
AutoStart=1
SSL=0
[SMTPServer]
ServerName=localhost
SrcPort=$TUNNEL_SMTPS
DestPort=$SMTPS_PORT
AutoStart=1
SSL=1
[SMTPServer]
ServerName=localhost
SrcPort=$TUNNEL_SMTP_STARTTLS
DestPort=$SMTP_STARTTLS_PORT
AutoStart=1
SSL=0
StartTLS=1
[CustomHeader]
HeaderName=X-E2E-Tunnel
HeaderBody=news
InsertAfter=
[CustomMailHeader]
HeaderName=X-E2E-Tunnel
HeaderBody=mail
InsertAfter=
INI
  # The companion trusts the run's own CA through its configuration file in
  # the settings folder brindle runs with (it hands that folder on).
  printf 'ca-file = %s\n' "$WORK/pki/ca.crt" >"$WORK/settings/SslBridge.conf"
}

main() {
  ensure_packages
  [ "${1:-}" = "--install-only" ] && return 0
  find_binaries
  WORK=$(mktemp -d "${TMPDIR:-/tmp}/brindle-e2e.XXXXXX")
  chmod 755 "$WORK"
  # shellcheck source=servers.sh
  source "$HERE/servers.sh"
  trap cleanup EXIT
  trap 'exit 130' INT TERM

  make_pki
  start_inn
  start_dovecot
  start_exim
  say "servers up: nntp $INN_PORT, pop3 $POP3_PORT, pop3s $POP3S_PORT, smtp $SMTP_PORT, smtps $SMTPS_PORT, smtp+starttls $SMTP_STARTTLS_PORT"
  place_signed_mail
  write_settings

  # Never depend on the production control port 5555 being free.
  export BRINDLE_COMPANION_PORT
  BRINDLE_COMPANION_PORT=$(free_port)
  export XDG_CONFIG_HOME=$WORK/xdg
  export INN_PORT POP3_PORT TUNNEL_NNTP TUNNEL_POP3 TUNNEL_POP3S TUNNEL_SMTP TUNNEL_SMTPS TUNNEL_SMTP_STARTTLS
  export E2E_XNEWSREADER E2E_XMAILER E2E_SIGNED_SUBJECT=$SIGNED_SUBJECT
  export E2E_SMTP_MAILDIR=$WORK/smtp-in
  local rc=0
  timeout --kill-after=10 "${E2E_TIME_LIMIT:-180}" \
    "$BIN/brindle" --settings-dir "$WORK/settings" --client "$PYTHON" "$HERE/clients.py" \
    2> >(tee "$WORK/brindle.log" | grep -E 'SslBridge: (error|warning)' >&2) || rc=$?
  [ "$rc" -eq 124 ] && say "time limit reached"
  return "$rc"
}

main "$@"
