#!/usr/bin/env bash
# Builds everything and runs the tests: ./test.sh [preset]. The presets that have tests are
# release (the default), debug, asan, clang and clang-asan.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")"
. tools/require_tools.sh

preset=${1:-release}
case $preset in
  clang*) compiler=clang ;;
  *) compiler=$(have g++ c++ clang++ || echo g++) ;;
esac
require_tools $compiler cmake ninja-build libgtest-dev

jobs=$(nproc 2>/dev/null || echo 2)
forget_moved_build "build/$preset"
cmake --preset "$preset" -DBRINDLEMOTH_TESTS=ON </dev/null
cmake --build --preset "$preset" -j "$jobs" </dev/null
ctest --preset "$preset" -j "$jobs" </dev/null
