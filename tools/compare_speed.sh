#!/usr/bin/env bash
# Compares the speed of two builds of the engine: tools/compare_speed.sh A B [depth] [rounds].
# A and B are programs or build directories. Each round runs "bench depth" with both, A first in
# odd rounds and B first in even ones, and prints the ratio of B's time to A's; at the end come the
# median and the spread. Ends with status 1 when the node totals differ.
set -euo pipefail

. "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/require_tools.sh"

usage="A B [depth] [rounds]"
[ $# -ge 2 ] && [ $# -le 4 ] || fail_usage "$usage"
depth=${3-14}
rounds=${4-10}
is_positive "$depth" && is_positive "$rounds" || fail_usage "$usage, with numbers from 1"

# program BUILD: the engine itself.
program() {
  if [ -d "$1" ]; then echo "$1/src/brindlemoth"; else realpath -m "$1"; fi
}
a=$(program "$1")
b=$(program "$2")
for file in "$a" "$b"; do
  [ -f "$file" ] && [ -x "$file" ] || fail_usage "$usage; there is no program $file"
done

# run PROGRAM: its node total and its time in milliseconds.
run() {
  "$1" bench "$depth" </dev/null | awk '/^Nodes/ { nodes = $3 } /^Time/ { print nodes, $3 }'
}

printf 'A: %s\nB: %s\nbench %s, B / A:\n' "$a" "$b" "$depth"
ratios=()
for ((round = 1; round <= rounds; round++)); do
  if ((round % 2)); then
    read -r nodes_a time_a < <(run "$a")
    read -r nodes_b time_b < <(run "$b")
  else
    read -r nodes_b time_b < <(run "$b")
    read -r nodes_a time_a < <(run "$a")
  fi
  if [ "$nodes_a" != "$nodes_b" ]; then
    fail "$nodes_a nodes in A, $nodes_b in B"
  fi
  ratio=$(awk "BEGIN { printf \"%.4f\", $time_b / $time_a }")
  ratios+=("$ratio")
  printf '%3d  A %6d ms  B %6d ms  %s\n' "$round" "$time_a" "$time_b" "$ratio"
done
printf '%s\n' "${ratios[@]}" | sort -n | awk -v nodes="$nodes_a" '
  { value[NR] = $1 }
  END {
    median = NR % 2 ? value[(NR + 1) / 2] : (value[NR / 2] + value[NR / 2 + 1]) / 2
    printf "median %.3f, from %.3f to %.3f, at %d nodes\n", median, value[1], value[NR], nodes
  }'
