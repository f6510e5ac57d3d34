#!/usr/bin/env bash
# Runs a fuzz target: tools/fuzz.sh position|commands|book|tables SECONDS. It starts from the inputs
# in fuzz/corpus/TARGET, or from tables that it makes. What it learns stays in
# build/fuzz/corpus/TARGET, and an input that fails is written to build/fuzz and named.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
. tools/require_tools.sh

targets='position|commands|book|tables'
[ $# -eq 2 ] && is_one_of "$1" "$targets" && is_positive "$2" ||
  fail_usage "$targets SECONDS, at least one second"
target=$1
seconds=$2

require_writable build/fuzz
require_tools clang libclang-rt-dev cmake ninja-build
build=build/fuzz
forget_moved_build "$build"
cmake --preset fuzz >/dev/null
cmake --build "$build" --target "${target}_fuzz"

seeds=fuzz/corpus/$target
corpus=$build/corpus/$target
mkdir -p "$corpus"
options=()

# Each table in a directory with its companion, behind a head that names its signature and spreads
# its men.
seed_tables() {
  local signature number=0 length
  mkdir -p "$build/seeds"
  for signature in KQvK KPvK KBNvK KRvKR KNNvK KPPvK KPvKP; do
    if [ -e "$1/$signature.rtbw" ]; then
      length=$(stat -c %s "$1/$signature.rtbw")
      {
        printf '%b' "\\x$(printf %02x "$number")\\x$(printf %02x $((length % 256)))"
        printf '%b' "\\x$(printf %02x $((length / 256 % 256)))"
        printf '\x04\x1b\x2d\x3f\x00\x33\x0a\x39\x08\x12\x24\x36\x01\x0b\x15\x1f'
        printf '\x02\x3c\x21\x06\x07\x0e\x31\x1c\x3b\x11\x09\x2a\x05\x1a\x13\x38'
        cat "$1/$signature.rtbw" "$1/$signature.rtbz"
      } >"$build/seeds/$signature"
    fi
    number=$((number + 1))
  done
}

if [ "$target" = tables ]; then
  options=(-max_len=16384)
  cmake --build "$build" --target tablegen
  "$(find "$build" -name tablegen -type f -perm -u+x)" --men 3 --out "$build/tables" >/dev/null 2>&1
  seed_tables "$build/tables"
  seeds=$build/seeds
fi

# Without -entropic=0 libFuzzer spends up to a fifth of the time on the weights of its corpus.
exec "$build/fuzz/${target}_fuzz" -max_total_time="$seconds" -timeout=60 -close_fd_mask=3 -entropic=0 \
  -artifact_prefix="$build/" "${options[@]}" "$corpus" "$seeds"
