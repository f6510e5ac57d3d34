#!/usr/bin/env bash
# Builds what is in web/ and runs its tests: ./test.sh wasm. The engine package is compared with the
# native programs in BRINDLEMOTH_BUILD, the release build when that is not set.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
. tools/require_tools.sh
. tools/web_steps.sh

[ $# -eq 0 ] || fail_usage "(no arguments)"
require_writable build/wasm web
require_tools "${web_tools[@]}" chromium $(have g++ c++ clang++ || echo g++)
install_web_packages
build_wasm -DBRINDLEMOTH_WERROR=ON
build_site

if [ -z "${BRINDLEMOTH_BUILD:-}" ]; then
  BRINDLEMOTH_BUILD=build/release
  forget_moved_build "$BRINDLEMOTH_BUILD"
  [ -f "$BRINDLEMOTH_BUILD/build.ninja" ] ||
    cmake --preset release -DBRINDLEMOTH_TESTS=OFF </dev/null
  cmake --build "$BRINDLEMOTH_BUILD" --target brindlemoth tablegen </dev/null
fi
BRINDLEMOTH_BUILD=$(readlink -f "$BRINDLEMOTH_BUILD")
export BRINDLEMOTH_BUILD
status=0
npm --prefix web test --workspace engine </dev/null || status=1
npm --prefix web test --workspace page </dev/null || status=1
exit $status
