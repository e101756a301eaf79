#!/usr/bin/env bash
# Builds the program and runs it in the foreground with the user's settings
# (the README's run command). Arguments are handed to brindle, e.g.
#   scripts/run.sh --settings-dir ~/brindle-test
#   scripts/run.sh --client slrn -h 127.0.0.1
# Stop it with Ctrl-C.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/install-deps.sh"
"$root/scripts/build.sh" release >&2
exec "$root/build/release/bin/brindle" "$@"
