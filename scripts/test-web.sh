#!/usr/bin/env bash
# usage: scripts/test-web.sh
# Builds the package and the page for browsers, and tests them: what the package accepts and draws in Node.js, the digests of golden
# recordings with each kernel set, and the page in a headless Chromium.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

install_packages "${web_packages[@]}" "${web_test_packages[@]}"
# Emscripten's own scripts need modules of Debian's Node.js, and fail with newer ones' fetch.
export NODE_PATH=/usr/share/nodejs NODE_OPTIONS=--no-experimental-fetch
step wasm
scripts/zlib-for.sh wasm32-emscripten
cmake --preset wasm >/dev/null
cmake --build --preset wasm -j "$(nproc)"
unset NODE_PATH NODE_OPTIONS
web=build/wasm/web

step "the package in Node.js"
VORNA_PACKAGE=$web/package node --test tests/web/
scripts/receipt.py --check wasm

step "the page in Chromium"
/usr/bin/python3 tests/web/page.py $web/site . chromium
