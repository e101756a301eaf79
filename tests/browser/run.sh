#!/usr/bin/env bash
# The browser view in headless Chromium: installs playwright-core from npm
# (it never downloads a browser; Debian's chromium is used), then runs
# run.mjs against brindle from BRINDLE_BIN_DIR (default build/debug/bin).
set -euo pipefail
cd "$(dirname "$0")"
export PLAYWRIGHT_SKIP_BROWSER_DOWNLOAD=1
if [[ ! -d node_modules/playwright-core ]]; then
  npm ci --no-audit --no-fund
fi
exec timeout 180 node run.mjs
