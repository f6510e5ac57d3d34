#!/usr/bin/env bash
# Counts the positions of a test suite that the engine solves: tools/solve_suite.sh FILE
# [MILLISECONDS] [PROGRAM]. FILE has a position of the format EPD a line, with the best moves (bm)
# or the moves to avoid (am). Each position gets that time (1000) in a process of its own, one after
# the other.
set -euo pipefail

root=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/..
. "$root/tools/require_tools.sh"

usage="FILE [MILLISECONDS] [PROGRAM]"
[ $# -ge 1 ] && [ $# -le 3 ] && [ -f "$1" ] && [ -r "$1" ] || fail_usage "$usage"
suite=$1
milliseconds=${2-1000}
is_positive "$milliseconds" || fail_usage "$usage"
engine=$(realpath -m "${3-$root/build/release/src/brindlemoth}")
[ -f "$engine" ] && [ -x "$engine" ] || fail_usage "$usage; there is no program $engine"

# matches MOVE BOARD NOTATION: whether a move such as g1f3, in a position whose pieces are the FEN
# field BOARD, is what NOTATION writes as Nf3.
matches() {
  awk -v move="$1" -v board="$2" -v notation="$3" 'BEGIN {
    gsub(/[1-8]/, "&.", board)
    for (digit = 1; digit <= 8; digit++)
      gsub(digit ".", substr("........", 1, digit), board)
    split(board, ranks, "/")
    from_file = index("abcdefgh", substr(move, 1, 1))
    piece = toupper(substr(ranks[9 - substr(move, 2, 1)], from_file, 1))
    gsub(/[x+#=!?]/, "", notation)
    if (notation ~ /^O-O/)
      exit !(piece == "K" && move ~ (notation == "O-O" ? /^e.g/ : /^e.c/))
    if (notation ~ /^[KQRBN]/) {
      wanted = substr(notation, 1, 1)
      notation = substr(notation, 2)
    } else {
      wanted = "P"
    }
    if (wanted == "P" && notation ~ /[QRBN]$/) {
      promotion = tolower(substr(notation, length(notation)))
      notation = substr(notation, 1, length(notation) - 1)
    }
    to = substr(notation, length(notation) - 1)
    origin = substr(notation, 1, length(notation) - 2)
    if (piece != wanted || substr(move, 3, 2) != to || substr(move, 5) != promotion) exit 1
    for (i = 1; i <= length(origin); i++)
      if (!index(substr(move, 1, 2), substr(origin, i, 1))) exit 1
    # A pawn that is written without its file moves straight on.
    exit wanted == "P" && origin == "" && substr(move, 1, 1) != substr(to, 1, 1)
  }'
}

# any_matches MOVE BOARD NOTATION...
any_matches() {
  local move=$1 board=$2 notation
  shift 2
  for notation in "$@"; do
    if matches "$move" "$board" "$notation"; then return 0; fi
  done
  return 1
}

solved=0
total=0
while IFS= read -r line || [ -n "$line" ]; do
  read -r board side castling en_passant operations <<<"${line//$'\r'/}"
  [ -n "$operations" ] || continue
  best=$(sed -nE 's/^(.*[ ;])?bm ([^;]*)(;.*)?$/\2/p' <<<"$operations")
  avoid=$(sed -nE 's/^(.*[ ;])?am ([^;]*)(;.*)?$/\2/p' <<<"$operations")
  answer=$(printf 'position fen %s %s %s %s 0 1\ngo movetime %d\n' "$board" "$side" "$castling" \
    "$en_passant" "$milliseconds" | "$engine" | awk '/^bestmove/ { print $2 }')
  total=$((total + 1))
  verdict=solved
  if [ -n "$best" ] && ! any_matches "$answer" "$board" ${best//+/}; then verdict=missed; fi
  if [ -n "$avoid" ] && any_matches "$answer" "$board" ${avoid//+/}; then verdict=missed; fi
  [ $verdict = missed ] || solved=$((solved + 1))
  printf '%3d %s %s, wanted:%s%s\n' "$total" "$verdict" "$answer" "${best:+ $best}" \
    "${avoid:+ not $avoid}"
done <"$suite"
echo "$solved of $total solved, $milliseconds ms a position"
