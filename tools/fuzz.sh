#!/usr/bin/env bash
# Runs a fuzz target: tools/fuzz.sh position|commands|book|tables SECONDS. What it learns stays in
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

seeds=$build/seeds/$target
corpus=$build/corpus/$target
rm -rf "$seeds"
mkdir -p "$seeds" "$corpus"

# seed NAME: makes standard input a seed.
seed() { cat >"$seeds/$1"; }

# The lines of standard input, a seed each.
seed_lines() {
  local line number=0
  while IFS= read -r line; do
    number=$((number + 1))
    printf '%s' "$line" | seed "$1$number"
  done
}

# Each table there with its companion, behind a head that names its signature and spreads its men.
seed_tables() {
  local directory=$1 signature number=0 length
  for signature in KQvK KPvK KBNvK KRvKR KNNvK KPPvK KPvKP; do
    if [ -e "$directory/$signature.rtbw" ]; then
      length=$(stat -c %s "$directory/$signature.rtbw")
      {
        printf '%b' "\\x$(printf %02x "$number")\\x$(printf %02x $((length % 256)))"
        printf '%b' "\\x$(printf %02x $((length / 256 % 256)))"
        printf '\x04\x1b\x2d\x3f\x00\x33\x0a\x39\x08\x12\x24\x36\x01\x0b\x15\x1f'
        printf '\x02\x3c\x21\x06\x07\x0e\x31\x1c\x3b\x11\x09\x2a\x05\x1a\x13\x38'
        cat "$directory/$signature.rtbw" "$directory/$signature.rtbz"
      } | seed "$2$signature"
    fi
    number=$((number + 1))
  done
}

options=()
case $target in
  position)
    grep -rhoE '"[1-8pnbrqkPNBRQK/]{8,} [wb] [^"]*"' tests | tr -d '"' | seed_lines test
    [ ! -e ../shared/epd/positions.fen ] || head -100 ../shared/epd/positions.fen | seed_lines game
    ;;
  commands)
    grep -hoE '"(go|position|setoption|uci|stop|d|perft|quit|isready)[^"]*"' tests/*/*_test.cpp |
      tr -d '"' | sed 's/\\[rn]/\n/g' | split -l 6 - "$seeds/test"
    ;;
  book)
    seq 0 6 | while read -r key; do
      printf '%b' "\\x0${key}0000000\\x03\\x1c\\x00\\x01zzzz" | seed "key$key"
    done
    [ ! -e ../shared/books/book-small.bin ] || head -c 2048 ../shared/books/book-small.bin | seed book
    ;;
  tables)
    options=(-max_len=16384)
    cmake --build "$build" --target tablegen
    "$(find "$build" -name tablegen -type f -perm -u+x)" --men 3 --out "$build/tables" >/dev/null 2>&1
    seed_tables "$build/tables" made
    seed_tables ../shared/syzygy genuine
    ;;
esac

exec "$build/fuzz/${target}_fuzz" -max_total_time="$seconds" -timeout=60 -close_fd_mask=3 \
  -artifact_prefix="$build/" "${options[@]}" "$corpus" "$seeds"
