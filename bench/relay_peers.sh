#!/bin/sh
# Pass-through against other relays in one run: installs socat, haproxy and
# nginx's stream module from Debian when missing, starts each on a loopback
# port in front of relay_bench's server with 256 KiB buffers (their tuned
# setting), runs relay_bench and stops them again.
# Usage: bench/relay_peers.sh   (BUILD_DIR as for run.sh; MIB, ROUNDS)
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build/bench-release}
missing=""
for p in socat haproxy nginx-light libnginx-mod-stream; do
  dpkg -s "$p" >/dev/null 2>&1 || missing="$missing $p"
done
if [ -n "$missing" ]; then
  sudo=""; [ "$(id -u)" -eq 0 ] || sudo=sudo
  $sudo apt-get install -y --no-install-recommends $missing >/dev/null
fi
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DBRINDLE_BENCH=ON -DBRINDLE_TESTS=OFF >/dev/null
cmake --build "$build" -j2 --target relay_bench

free_port() { python3 -c 'import socket; s=socket.socket(); s.bind(("127.0.0.1",0)); print(s.getsockname()[1])'; }
work=$(mktemp -d)
server=$(free_port); p_socat=$(free_port); p_haproxy=$(free_port); p_nginx=$(free_port)
pids=""
trap 'for p in $pids; do kill "$p" 2>/dev/null || true; done; rm -rf "$work"' EXIT

socat -b 262144 "TCP-LISTEN:$p_socat,bind=127.0.0.1,reuseaddr,fork" "TCP:127.0.0.1:$server" &
pids="$pids $!"
cat >"$work/haproxy.cfg" <<CFG
global
  tune.bufsize 262144
defaults
  mode tcp
  timeout connect 5s
  timeout client 60s
  timeout server 60s
listen relay
  bind 127.0.0.1:$p_haproxy
  server s 127.0.0.1:$server
CFG
haproxy -f "$work/haproxy.cfg" -db &
pids="$pids $!"
cat >"$work/nginx.conf" <<CFG
load_module /usr/lib/nginx/modules/ngx_stream_module.so;
worker_processes 1;
pid $work/nginx.pid;
error_log $work/nginx.log;
events {}
stream {
  server {
    listen 127.0.0.1:$p_nginx;
    proxy_pass 127.0.0.1:$server;
    proxy_buffer_size 256k;
  }
}
CFG
nginx -c "$work/nginx.conf" -g 'daemon off;' &
pids="$pids $!"
sleep 1
"$build/bench/relay_bench" --server-port "$server" --peer "socat=$p_socat" \
  --peer "haproxy=$p_haproxy" --peer "nginx=$p_nginx" --mib "${MIB:-512}" --rounds "${ROUNDS:-5}"
