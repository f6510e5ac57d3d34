#!/usr/bin/env bash
# Builds the engine for the browser and the page around it, serves the page on this machine alone and
# prints its address: ./web.sh. It ends with Ctrl-C.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")"
. tools/require_tools.sh
. tools/web_steps.sh

[ $# -eq 0 ] || fail_usage "(no arguments)"
require_writable build/wasm web
require_tools "${web_tools[@]}"
install_web_packages
build_wasm
build_site
exec npm --prefix web run serve --workspace page
