#!/usr/bin/env bash
# Checks that clang-format would change nothing. Other versions than 14 break lines elsewhere.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
. tools/require_tools.sh

[ $# -eq 0 ] || fail_usage "(no arguments)"
require_tools clang-format-14
find src tablegen tests fuzz benchmarks '(' -name '*.cpp' -o -name '*.h' ')' \
  -exec clang-format-14 --dry-run --Werror {} +
