#!/usr/bin/env bash
# Builds everything and runs the tests: ./test.sh [preset]. The presets that have tests are
# release (the default), debug, asan, clang and clang-asan.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")"
. tools/require_tools.sh

preset=${1:-release}
case $preset in
  clang*) compilers=(clang++) ;;
  *) compilers=(g++ c++ clang++) ;;
esac

missing=()
have "${compilers[@]}" || missing+=("${compilers[0]/clang++/clang}")
have cmake || missing+=(cmake)
have ninja || missing+=(ninja-build)
# A GoogleTest in another place is found by what CMake itself goes by.
if [ ! -e /usr/include/gtest/gtest.h ] && [ ! -e /usr/local/include/gtest/gtest.h ] &&
  [ -z "${CMAKE_PREFIX_PATH:-}${GTest_ROOT:-}${GTest_DIR:-}" ]; then
  missing+=(libgtest-dev)
fi
require_tools "${missing[@]}"

jobs=$(nproc 2>/dev/null || echo 2)
forget_moved_build "build/$preset"
cmake --preset "$preset" -DBRINDLEMOTH_TESTS=ON </dev/null
cmake --build --preset "$preset" -j "$jobs" </dev/null
ctest --preset "$preset" -j "$jobs" </dev/null
