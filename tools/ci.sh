#!/usr/bin/env bash
# All that is checked for every change, the quickest first; ./test.sh ci calls it. Each step has a
# build directory of its own, so that a second run only builds what has changed.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
. tools/require_tools.sh
. tools/web_steps.sh

[ $# -eq 0 ] || fail_usage "(no arguments)"
require_writable build

# Programs of tests that are quick under the sanitizers, and what reads malformed input.
sanitized=(board movegen eval search shell book table_file end_to_end)
fuzz_seconds=10

step() {
  name=$*
  printf '\n== %s (after %d s)\n' "$name" "$SECONDS"
}
trap '[ $? -eq 0 ] || printf "\n== FAILED: %s\n" "$name"' EXIT

step "Tools"
require_tools g++ clang libclang-rt-dev clang-format-14 clang-tidy-14 cmake ninja-build libgtest-dev \
  libbenchmark-dev
jobs=$(nproc 2>/dev/null || echo 2)

# build PRESET [TARGET...]
build() {
  local preset=$1
  shift
  forget_moved_build "build/$preset"
  cmake --preset "$preset" </dev/null
  cmake --build --preset "$preset" -j "$jobs" ${1:+--target "$@"} </dev/null
}

step "Format and layers"
tools/check_format.sh
tools/check_layers.sh

step "Everything without a warning of g++, and the tests in that build"
./test.sh strict

step "clang-tidy of the programs"
# What is for other systems is not in the list of this build's commands.
find src tablegen -name '*.cpp' ! -name '*_windows.cpp' ! -name '*_wasi.cpp' -print0 |
  xargs -0 -P "$jobs" -n 4 clang-tidy-14 --quiet -p build/strict \
    --extra-arg=-Wno-ignored-optimization-argument

step "The programs and the fuzz targets without a warning of clang++"
build fuzz

step "Tests under the sanitizers: ${sanitized[*]}"
build asan "${sanitized[@]/%/_tests}"
ctest --preset asan -j "$jobs" -R "^($(IFS='|' && echo "${sanitized[*]}"))\$" </dev/null

step "Threads of tablegen under ThreadSanitizer"
build tsan tablegen
tables=$(mktemp -d)
build/tsan/tablegen/tablegen --men 3 --threads 4 --out "$tables"
build/tsan/tablegen/tablegen --verify "$tables" --threads 4
rm -r "$tables"

step "The engine in the browser"
if (require_tools "${web_tools[@]}" chromium && install_web_packages); then
  BRINDLEMOTH_BUILD=build/strict ./test.sh wasm
else
  echo "Skipped: the engine in the browser; its tools or npm packages cannot be had here"
fi

for target in position commands book tables; do
  step "Fuzz target $target, $fuzz_seconds s"
  tools/fuzz.sh "$target" "$fuzz_seconds"
done

printf '\n== All passed (%d s)\n' "$SECONDS"
