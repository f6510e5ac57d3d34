# Sourced by the scripts: checks of their arguments, and of what they need to run.

# Messages name the script that the user started, also where it starts others.
export BRINDLEMOTH_SCRIPT=${BRINDLEMOTH_SCRIPT:-${0##*/}}

# fail MESSAGE: ends the script with status 1.
fail() {
  echo "$BRINDLEMOTH_SCRIPT: $1" >&2
  exit 1
}

# fail_usage ARGUMENTS: ends the script with status 2 and one line that names its arguments.
fail_usage() {
  echo "usage: $0 $1" >&2
  exit 2
}

# is_positive WORD: whether it is a whole number from 1 to 999,999.
is_positive() { [[ $1 =~ ^[1-9][0-9]{0,5}$ ]]; }

# is_one_of WORD LIST: whether the list, whose words are separated by |, has the word.
is_one_of() { [ -n "$1" ] && [[ $1 != *'|'* && "|$2|" == *"|$1|"* ]]; }

# require_tools PACKAGE...: each argument is the Debian package of a tool. What is missing is
# installed as root on a system with apt-get; otherwise one line says what to install, and the
# script ends with status 1. Nothing is written to standard output, nothing read from input.
require_tools() {
  local package missing=()
  for package in "$@"; do
    is_there "$package" || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  have apt-get || fail "please install (names of Debian packages): ${missing[*]}"
  if [ "$(id -u)" -eq 0 ]; then
    export DEBIAN_FRONTEND=noninteractive
    if apt-get update -q >&2 </dev/null &&
      apt-get install -y -q --no-install-recommends "${missing[@]}" >&2 </dev/null; then
      return 0
    fi
  fi
  fail "please run: sudo apt-get install --no-install-recommends ${missing[*]}"
}

# may_build DIRECTORY: whether this user may write everywhere that a build there has to.
may_build() {
  local place=$1
  while [ ! -e "$place" ]; do place=$(dirname "$place"); done
  [ -w "$place" ] || return 1
  for place in "$1"/{.run_lock,.ninja_log,CMakeCache.txt}; do
    [ ! -e "$place" ] || [ -w "$place" ] || return 1
  done
}

# require_writable DIRECTORY...: ends the script where this user may not build in one of them.
require_writable() {
  local directory
  for directory in "$@"; do
    may_build "$directory" ||
      fail "cannot write to $PWD/$directory; build as its owner, or copy the sources"
  done
}

# is_there PACKAGE: whether what we use of the package can be found, wherever it comes from.
is_there() {
  case $1 in
    clang) have clang++ ;;
    dpkg-dev) have dpkg-shlibdeps ;;
    libclang-rt-dev) # the sanitizers and the fuzzer of clang++
      ls "$(clang++ -print-resource-dir 2>/dev/null)"/lib/*/libclang_rt.fuzzer* >/dev/null 2>&1
      ;;
    ninja-build) have ninja ;;
    googletest) [ -e /usr/src/googletest/CMakeLists.txt ] ;; # its sources
    g++-mingw-w64-x86-64-posix) have x86_64-w64-mingw32-g++-posix ;;
    wine64) have wine ;;
    g++-aarch64-linux-gnu) have aarch64-linux-gnu-g++ ;;
    qemu-user) have qemu-aarch64 ;;
    clang-14) have clang++-14 ;;
    lld-14) have wasm-ld-14 ;;
    wasi-libc) [ -e /usr/include/wasm32-wasi/stdio.h ] ;;
    libc++-14-dev-wasm32) [ -e /usr/lib/wasm32-wasi/libc++.a ] ;;
    libc++abi-14-dev-wasm32) [ -e /usr/lib/wasm32-wasi/libc++abi.a ] ;;
    libclang-rt-14-dev-wasm32)
      ls /usr/lib/llvm-14/lib/clang/*/lib/wasi/libclang_rt.builtins-wasm32.a >/dev/null 2>&1
      ;;
    nodejs) have node ;;
    # A library in another place is found by what CMake itself goes by.
    libgtest-dev)
      has_header gtest/gtest.h || [ -n "${CMAKE_PREFIX_PATH:-}${GTest_ROOT:-}${GTest_DIR:-}" ]
      ;;
    libbenchmark-dev)
      has_header benchmark/benchmark.h ||
        [ -n "${CMAKE_PREFIX_PATH:-}${benchmark_ROOT:-}${benchmark_DIR:-}" ]
      ;;
    *) have "$1" ;;
  esac
}

has_header() { [ -e "/usr/include/$1" ] || [ -e "/usr/local/include/$1" ]; }

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

# name_skipped PRESET: prints the cases of its last tests that lacked what they need, such as the
# shared data, and passed without a check.
name_skipped() {
  sed -n 's/^\[  SKIPPED \] \([^ ]*\.[^ ]*\).*$/Skipped: \1/p' "build/$1/Testing/Temporary/LastTest.log" |
    sort -u
}
