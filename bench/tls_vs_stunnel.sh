#!/usr/bin/env bash
# Bulk transfer and connection rate through the TLS companion against
# stunnel's client mode on the same route: a plain source/sink behind one
# stunnel TLS server on loopback, reached once through SslBridge and once
# through a stunnel client. Prints MB/s for each (download and upload, median
# of a few rounds), sequential connect-exchange-close connections per second,
# and the ratios SslBridge / stunnel; a ratio of 1.0 or more means the
# companion is at least as fast.
#
#   BRINDLE_BIN_DIR   folder holding SslBridge (default: Release build in
#                     build/sslbridge-release)
#   TLS_BENCH_MB      megabytes per transfer (default 256)
#   TLS_BENCH_RUNS    runs per case (default 5)
#   TLS_BENCH_CONNS   connections per connection-rate run (default 1000)
set -euo pipefail

HERE=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
ROOT=$(cd "$HERE/.." && pwd)
MB=${TLS_BENCH_MB:-256}
RUNS=${TLS_BENCH_RUNS:-5}
PYTHON=/usr/bin/python3
[ -x "$PYTHON" ] || PYTHON=python3

for tool in stunnel4 openssl; do
  command -v "$tool" >/dev/null || { echo "tls bench: $tool is missing (apt-get install stunnel4 openssl)"; exit 1; }
done
if [ -n "${BRINDLE_BIN_DIR:-}" ]; then
  BIN=$BRINDLE_BIN_DIR
else
  BIN=$ROOT/build/sslbridge-release/bin
  cmake -S "$ROOT" -B "$ROOT/build/sslbridge-release" -DCMAKE_BUILD_TYPE=Release -DBRINDLE_TESTS=OFF >/dev/null
  cmake --build "$ROOT/build/sslbridge-release" -j2 --target SslBridge >/dev/null
fi

WORK=$(mktemp -d "${TMPDIR:-/tmp}/tls-bench.XXXXXX")
PIDS=()
cleanup() {
  local p
  for p in "${PIDS[@]}"; do kill "$p" 2>/dev/null || true; done
  for p in "${PIDS[@]}"; do wait "$p" 2>/dev/null || true; done
  rm -rf "$WORK"
}
trap cleanup EXIT

free_port() {
  "$PYTHON" -c 'import socket; s=socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])'
}
wait_port() {
  for _ in $(seq 100); do
    "$PYTHON" -c "import socket; socket.create_connection(('127.0.0.1', $1), 0.5)" 2>/dev/null && return 0
    sleep 0.1
  done
  echo "tls bench: nothing listens on $1"; exit 1
}

"$ROOT/scripts/test-certificates.sh" ca "$WORK/ca.crt" "$WORK/ca.key" "Bench CA"
"$ROOT/scripts/test-certificates.sh" server "$WORK/server.crt" "$WORK/server.key" \
  "$WORK/ca.crt" "$WORK/ca.key" localhost

SOURCE=$(free_port) TLS=$(free_port) CONTROL=$(free_port) ROUTE=$(free_port) CLIENT=$(free_port)

# Plain source and sink: "D n" sends n bytes; "U n" reads n bytes, answers "OK".
cat >"$WORK/source.py" <<'PY'
import socket, socketserver, sys
CHUNK = memoryview(bytes(1 << 20))
class Handler(socketserver.StreamRequestHandler):
    def handle(self):
        line = self.rfile.readline()
        if not line:  # a readiness probe
            return
        cmd, n = line.split()
        n = int(n)
        s = self.request
        if cmd == b"D":
            while n > 0:
                k = min(n, len(CHUNK)); s.sendall(CHUNK[:k]); n -= k
        else:
            buf = bytearray(1 << 20)
            while n > 0:
                k = self.rfile.readinto(memoryview(buf)[:min(n, len(buf))])
                if not k: break
                n -= k
            s.sendall(b"OK\n")
class Server(socketserver.ThreadingTCPServer):
    allow_reuse_address = True
    daemon_threads = True
Server(("127.0.0.1", int(sys.argv[1])), Handler).serve_forever()
PY
"$PYTHON" "$WORK/source.py" "$SOURCE" & PIDS+=($!)

cat >"$WORK/server.conf" <<CONF
foreground = yes
pid =
debug = 3
[tls]
accept = 127.0.0.1:$TLS
connect = 127.0.0.1:$SOURCE
cert = $WORK/server.crt
key = $WORK/server.key
CONF
stunnel4 "$WORK/server.conf" 2>"$WORK/stunnel-server.log" & PIDS+=($!)

cat >"$WORK/client.conf" <<CONF
foreground = yes
pid =
debug = 3
[tls]
client = yes
accept = 127.0.0.1:$CLIENT
connect = 127.0.0.1:$TLS
sni = localhost
verifyChain = yes
checkHost = localhost
CAfile = $WORK/ca.crt
CONF
stunnel4 "$WORK/client.conf" 2>"$WORK/stunnel-client.log" & PIDS+=($!)

"$BIN/SslBridge" --control-port "$CONTROL" --ca-file "$WORK/ca.crt" 2>"$WORK/sslbridge.log" & PIDS+=($!)
wait_port "$SOURCE"; wait_port "$TLS"; wait_port "$CLIENT"; wait_port "$CONTROL"
"$PYTHON" - "$CONTROL" "$ROUTE" "$TLS" <<'PY'
import socket, sys
control, route, tls = sys.argv[1:]
s = socket.create_connection(("127.0.0.1", int(control)), 5)
s.sendall(f"a:{route}:localhost:{tls}\r\nEND".encode())
s.recv(1)  # the companion closes once the route is set
PY

"$PYTHON" - "$MB" "$RUNS" "$SOURCE" "$ROUTE" "$CLIENT" "${TLS_BENCH_CONNS:-1000}" <<'PY'
import socket, sys, time
mb, runs, direct, bridge, stunnel, conns = (int(a) for a in sys.argv[1:])
n = mb << 20
buf = bytearray(1 << 20)

def download(port):
    s = socket.create_connection(("127.0.0.1", port), 10)
    s.settimeout(60)
    t = time.perf_counter()
    s.sendall(f"D {n}\n".encode())
    got = 0
    view = memoryview(buf)
    while got < n:
        k = s.recv_into(view)
        if not k: break
        got += k
    dt = time.perf_counter() - t
    s.close()
    assert got == n, f"short download: {got} of {n}"
    return n / dt / 1e6

def upload(port):
    s = socket.create_connection(("127.0.0.1", port), 10)
    s.settimeout(60)
    t = time.perf_counter()
    s.sendall(f"U {n}\n".encode())
    view = memoryview(bytes(1 << 20))
    left = n
    while left > 0:
        k = min(left, len(view)); s.sendall(view[:k]); left -= k
    assert s.recv(3) == b"OK\n"
    dt = time.perf_counter() - t
    s.close()
    return n / dt / 1e6

# The machine is shared: paths take turns within each round, and the ratio
# is the median of the rounds' ratios, so a busy moment hits both alike.
import statistics
paths = (("direct (plain TCP)", direct), ("SslBridge", bridge), ("stunnel", stunnel))
speeds = {(name, kind): [] for name, _ in paths for kind in ("download", "upload")}
for _ in range(runs):
    for kind, fn in (("download", download), ("upload", upload)):
        for name, port in paths:
            speeds[(name, kind)].append(fn(port))

def connections(port):
    t = time.perf_counter()
    for _ in range(conns):
        s = socket.create_connection(("127.0.0.1", port), 10)
        s.settimeout(10)
        s.sendall(b"D 16\n")
        got = 0
        while got < 16:
            k = len(s.recv(16))
            if not k: break
            got += k
        s.close()
        assert got == 16, "short answer"
    return conns / (time.perf_counter() - t)

for _ in range(runs):
    for name, port in paths[1:]:
        speeds.setdefault((name, "connections"), []).append(connections(port))

print(f"TLS bulk transfer, {mb} MiB per run, median of {runs} rounds")
for kind in ("download", "upload"):
    for name, _ in paths:
        print(f"  {kind:8} {name:20} {statistics.median(speeds[(name, kind)]):9.1f} MB/s")
    ratios = [a / b for a, b in zip(speeds[("SslBridge", kind)], speeds[("stunnel", kind)])]
    print(f"  {kind:8} ratio SslBridge/stunnel {statistics.median(ratios):5.2f}")
print(f"Sequential connections (connect, 16 bytes, close), {conns} per run, median of {runs}")
for name, _ in paths[1:]:
    print(f"  {name:20} {statistics.median(speeds[(name, 'connections')]):9.1f} /s")
ratios = [a / b for a, b in zip(speeds[("SslBridge", "connections")], speeds[("stunnel", "connections")])]
print(f"  ratio SslBridge/stunnel {statistics.median(ratios):5.2f}")
PY
echo "  SslBridge resumed $(grep -c ', resumed$' "$WORK/sslbridge.log" || true) of" \
  "$(grep -c ': connected, ' "$WORK/sslbridge.log" || true) TLS connections"
