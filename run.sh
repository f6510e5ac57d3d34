#!/usr/bin/env bash
# Builds the engine if its sources are newer and starts it, with all arguments and standard input.
# Standard output belongs to the engine alone: what the build says goes to standard error, the
# first time as it comes, later only when it fails.
set -euo pipefail
call_directory=$PWD
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")"
root=$PWD
. tools/require_tools.sh

build=build/release
engine=$build/src/brindlemoth

build_engine() {
  forget_moved_build "$build"
  # The engine alone needs no GoogleTest; test.sh turns the tests on in the same directory.
  if [ ! -f "$build/build.ninja" ]; then
    cmake --preset release -DBRINDLEMOTH_TESTS=OFF || return
  fi
  cmake --build "$build" --target brindlemoth
}

if may_build "$build"; then
  require_tools $(have g++ c++ clang++ || echo g++) cmake ninja-build
  mkdir -p "$build"

  # A match runner starts several engines at the same moment; they build one after the other.
  exec {lock}>"$build/.run_lock"
  if have flock; then flock "$lock" </dev/null; fi
  if [ ! -x "$engine" ]; then
    build_engine >&2 </dev/null || exit 1
  elif ! log=$(build_engine 2>&1 </dev/null); then
    printf '%s\n' "$log" >&2
    exit 1
  fi
  exec {lock}>&-
elif [ ! -x "$engine" ]; then
  require_writable "$build"
fi # Another user's finished build is started as it stands.

cd "$call_directory"
exec "$root/$engine" "$@"
