#!/usr/bin/env bash
# Builds everything and runs the tests: ./test.sh [preset]. The default preset is release; windows
# and arm64 are for another machine than this, and wasm for the engine in the browser and its page.
# ./test.sh long runs the tests that take minutes, which the others leave out, in the release
# build; ./test.sh ci does all that is done for every change.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")"
. tools/require_tools.sh

choices='release|debug|asan|clang|clang-asan|strict|long|ci|windows|arm64|wasm'
tests=${1-release}
[ $# -le 1 ] && is_one_of "$tests" "$choices" || fail_usage "[$choices]"

preset=$tests
case $tests in
  ci) exec tools/ci.sh ;;
  wasm) exec tools/test_web.sh ;;
  windows | arm64) exec tools/test_elsewhere.sh "$tests" ;;
  long) preset=release ;;
esac
case $preset in
  clang*) compiler=clang ;;
  *) compiler=$(have g++ c++ clang++ || echo g++) ;;
esac
require_writable "build/$preset"
require_tools $compiler cmake ninja-build libgtest-dev

jobs=$(nproc 2>/dev/null || echo 2)
forget_moved_build "build/$preset"
cmake --preset "$preset" -DBRINDLEMOTH_TESTS=ON </dev/null
cmake --build --preset "$preset" -j "$jobs" </dev/null
status=0
ctest --preset "$tests" -j "$jobs" </dev/null || status=$?
name_skipped "$preset"
exit $status
