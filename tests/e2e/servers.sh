# Real servers for the end-to-end run, each a private instance under $WORK on
# its own free loopback port. Sourced by run.sh; every function logs to
# $WORK/<server>.log and leaves a way to stop it in stop_servers.

free_port() {
  python3 -c 'import socket; s=socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])'
}

# Waits until something accepts on 127.0.0.1:$1 (at most $2 seconds).
wait_port() {
  local port=$1 limit=${2:-20} i
  for ((i = 0; i < limit * 10; i++)); do
    if python3 -c "import socket,sys; socket.create_connection(('127.0.0.1', $port), 0.5)" 2>/dev/null; then
      return 0
    fi
    sleep 0.1
  done
  echo "e2e: nothing listens on port $port after ${limit}s" >&2
  return 1
}

# A test CA and a certificate for "localhost" and 127.0.0.1.
make_pki() {
  local d=$WORK/pki certificates
  certificates=$(dirname "${BASH_SOURCE[0]}")/../../scripts/test-certificates.sh
  mkdir -p "$d"
  "$certificates" ca "$d/ca.crt" "$d/ca.key" "Brindle E2E CA"
  "$certificates" server "$d/server.crt" "$d/server.key" "$d/ca.crt" "$d/ca.key" localhost 127.0.0.1
  chmod 644 "$d"/*
}

# INN: an isolated news server with one group, local.test, where anyone on
# loopback may post. Its own configuration, so the system's copy (and its
# state after earlier installs) does not matter. Sets INN_PORT.
start_inn() {
  local d=$WORK/inn
  INN_PORT=$(free_port)
  mkdir -p "$d"/{etc,db,log,run,http} "$d"/spool/{articles,overview,incoming/tmp,outgoing,archive}
  # Secondary files (moderators, distrib.pats, ...) as packaged, when present.
  [ -d /etc/news ] && cp -a /etc/news/. "$d/etc/"
  cat >"$d/etc/inn.conf" <<CONF
domain: e2e.test
pathhost: e2e.test
organization: "Brindle end-to-end run"
mta: "/bin/true"
port: $INN_PORT
bindaddress: 127.0.0.1
bindaddress6: "::1"
ovmethod: tradindexed
hismethod: hisv6
pathnews: /usr/lib/news
pathbin: /usr/lib/news/bin
pathcontrol: /usr/lib/news/bin/control
pathfilter: /etc/news/filter
pathetc: $d/etc
pathdb: $d/db
pathlog: $d/log
pathrun: $d/run
pathhttp: $d/http
pathspool: $d/spool
patharticles: $d/spool/articles
pathoverview: $d/spool/overview
pathincoming: $d/spool/incoming
pathtmp: $d/spool/incoming/tmp
pathoutgoing: $d/spool/outgoing
patharchive: $d/spool/archive
CONF
  cat >"$d/etc/readers.conf" <<'CONF'
auth "loopback" {
  hosts: "localhost, 127.0.0.1, ::1"
  default: "<loopback>"
}
access "loopback" {
  users: "<loopback>"
  newsgroups: "*"
  access: RPA
}
CONF
  printf 'method tradspool {
  newsgroups: *
  class: 0
}
' >"$d/etc/storage.conf"
  # No feeding peers: every loopback connection is a reader (nnrpd).
  printf 'peer ME {
  hostname: "192.0.2.1"
}
' >"$d/etc/incoming.conf"
  printf 'ME:!*/!local::
' >"$d/etc/newsfeeds"
  printf '%s\n' 'control 0000000000 0000000001 n' 'control.cancel 0000000000 0000000001 n' \
    'junk 0000000000 0000000001 n' 'local.test 0000000000 0000000001 y' >"$d/db/active"
  : >"$d/db/active.times"
  printf 'local.test\tEnd-to-end tests.\n' >"$d/db/newsgroups"
  : >"$d/db/history"
  chown -R news:news "$d"
  su news -s /bin/sh -c "INNCONF='$d/etc/inn.conf' /usr/lib/news/bin/makedbz -i -o" \
    >>"$WORK/inn.log" 2>&1
  INNCONF=$d/etc/inn.conf /usr/lib/news/bin/innd -f >>"$WORK/inn.log" 2>&1 &
  INN_PID=$!
  wait_port "$INN_PORT"
}

stop_inn() {
  [ -n "${INN_PID:-}" ] || return 0
  INNCONF=$WORK/inn/etc/inn.conf /usr/lib/news/bin/ctlinnd -t 5 shutdown e2e >/dev/null 2>&1 ||
    kill "$INN_PID" 2>/dev/null || true
  wait "$INN_PID" 2>/dev/null || true
  INN_PID=
}

# Dovecot: POP3 and POP3S for the user "e2e" (password "secret") whose
# maildir is $WORK/mail/e2e. Sets POP3_PORT and POP3S_PORT.
start_dovecot() {
  local d=$WORK/dovecot
  POP3_PORT=$(free_port)
  POP3S_PORT=$(free_port)
  mkdir -p "$d/run" "$d/state" "$WORK/mail/e2e"/{cur,new,tmp}
  echo "e2e:{PLAIN}secret:8:8::$WORK/mail/e2e" >"$d/users"
  cat >"$d/dovecot.conf" <<CONF
base_dir = $d/run
state_dir = $d/state
log_path = $WORK/dovecot.log
protocols = pop3
listen = 127.0.0.1
ssl = yes
ssl_cert = <$WORK/pki/server.crt
ssl_key = <$WORK/pki/server.key
ssl_min_protocol = TLSv1.2
disable_plaintext_auth = no
auth_mechanisms = plain
first_valid_uid = 1
mail_location = maildir:$WORK/mail/%u
pop3_uidl_format = %f
passdb {
  driver = passwd-file
  args = $d/users
}
userdb {
  driver = passwd-file
  args = $d/users
}
service pop3-login {
  inet_listener pop3 {
    address = 127.0.0.1
    port = $POP3_PORT
  }
  inet_listener pop3s {
    address = 127.0.0.1
    port = $POP3S_PORT
    ssl = yes
  }
}
service imap-login {
  inet_listener imap {
    port = 0
  }
  inet_listener imaps {
    port = 0
  }
}
CONF
  chown -R mail:mail "$WORK/mail"
  dovecot -F -c "$d/dovecot.conf" >>"$WORK/dovecot.log" 2>&1 &
  DOVECOT_PID=$!
  wait_port "$POP3_PORT" && wait_port "$POP3S_PORT"
}

stop_dovecot() {
  [ -n "${DOVECOT_PID:-}" ] || return 0
  kill "$DOVECOT_PID" 2>/dev/null || true
  wait "$DOVECOT_PID" 2>/dev/null || true
  DOVECOT_PID=
}

# Exim: accepts mail for any address at e2e.test from loopback and files it
# in the maildir $WORK/smtp-in; plain SMTP, SMTP over TLS from the first
# byte, and a submission port that takes mail only after STARTTLS. Sets
# SMTP_PORT, SMTPS_PORT and SMTP_STARTTLS_PORT.
start_exim() {
  local d=$WORK/exim
  SMTP_PORT=$(free_port)
  SMTPS_PORT=$(free_port)
  SMTP_STARTTLS_PORT=$(free_port)
  mkdir -p "$d/spool" "$d/log" "$WORK/smtp-in"/{cur,new,tmp}
  cat >"$d/exim.conf" <<CONF
primary_hostname = e2e.test
domainlist local_domains = e2e.test
spool_directory = $d/spool
log_file_path = $d/log/%slog
keep_environment =
daemon_smtp_ports = $SMTP_PORT : $SMTPS_PORT : $SMTP_STARTTLS_PORT
tls_on_connect_ports = $SMTPS_PORT
tls_advertise_hosts = *
tls_certificate = $WORK/pki/server.crt
tls_privatekey = $WORK/pki/server.key
local_interfaces = 127.0.0.1
exim_user = mail
exim_group = mail
never_users =
acl_smtp_rcpt = acl_rcpt
acl_smtp_mail = acl_mail
begin acl
acl_mail:
  deny  condition = \${if eq{\$received_port}{$SMTP_STARTTLS_PORT}}
        !encrypted = *
        message = 5.7.0 Must issue a STARTTLS command first
  accept
acl_rcpt:
  accept domains = +local_domains
  deny
begin routers
everyone:
  driver = accept
  domains = +local_domains
  transport = to_maildir
begin transports
to_maildir:
  driver = appendfile
  directory = $WORK/smtp-in
  maildir_format
  user = mail
  group = mail
  mode = 0644
CONF
  chown -R mail:mail "$d" "$WORK/smtp-in"
  # Exim refuses a configuration that anyone but root could have changed.
  chown root:root "$d/exim.conf"
  chmod 644 "$d/exim.conf"
  exim -C "$d/exim.conf" -bdf -q5s -oP "$d/exim.pid" >>"$WORK/exim.log" 2>&1 &
  EXIM_LAUNCHER=$!
  wait_port "$SMTP_PORT" && wait_port "$SMTPS_PORT" && wait_port "$SMTP_STARTTLS_PORT"
}

stop_exim() {
  local pidfile=$WORK/exim/exim.pid
  if [ -s "$pidfile" ]; then kill "$(cat "$pidfile")" 2>/dev/null || true; fi
  [ -n "${EXIM_LAUNCHER:-}" ] && wait "$EXIM_LAUNCHER" 2>/dev/null || true
  EXIM_LAUNCHER=
}

stop_servers() {
  stop_inn
  stop_dovecot
  stop_exim
}
