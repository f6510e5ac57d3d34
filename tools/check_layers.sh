#!/usr/bin/env bash
# Fails when a file of src/ includes a header of a folder that is not in a lower layer than its own:
# tools/check_layers.sh. The layers are those of docs/architecture.md.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
. tools/require_tools.sh

[ $# -eq 0 ] || fail_usage "(no arguments)"

grep -rnE '^#include "' src | awk -F: '
  BEGIN {
    count = split("platform|board input|movegen eval|book tablebase|search|shell", layers, "|")
    for (i = 1; i <= count; ++i) {
      folders = split(layers[i], names, " ")
      for (k = 1; k <= folders; ++k)
        layer[names[k]] = i
    }
  }
  {
    split($1, path, "/")
    from = path[2]
    to = $3
    sub(/^#include "/, "", to)
    sub(/\/.*/, "", to)
    if (!(from in layer) || !(to in layer) || (from != to && layer[to] >= layer[from])) {
      print $1 ":" $2 ": " from "/ must not include from " to "/: " $3 > "/dev/stderr"
      failed = 1
    }
  }
  END { exit failed }'
