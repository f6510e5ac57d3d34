# Sourced by run.sh and test.sh: sees to it that the build tools are there.

# require_tools PACKAGE...: each argument is the Debian package of a tool that is missing. As root
# on a system with apt-get they are installed; otherwise one line says what to install, and the
# script ends with status 1. Nothing is written to standard output, nothing read from input.
require_tools() {
  [ $# -eq 0 ] && return 0
  if [ "$(id -u)" -eq 0 ] && command -v apt-get >/dev/null; then
    export DEBIAN_FRONTEND=noninteractive
    if apt-get update -q >&2 </dev/null && apt-get install -y -q "$@" >&2 </dev/null; then
      return 0
    fi
  fi
  echo "${0##*/}: please install: $*" >&2
  exit 1
}

# have COMMAND...: true when one of the commands is on the search path.
have() {
  local name
  for name in "$@"; do
    command -v "$name" >/dev/null && return 0
  done
  return 1
}

# forget_moved_build DIRECTORY: a build directory remembers where its sources were; when the whole
# tree was moved or copied since, its configuration is dropped so that it can be made anew.
forget_moved_build() {
  if [ -f "$1/CMakeCache.txt" ] &&
    ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" "$1/CMakeCache.txt"; then
    rm -rf "$1/CMakeCache.txt" "$1/CMakeFiles" "$1/build.ninja"
  fi
}
