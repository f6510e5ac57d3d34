#!/usr/bin/env bash
# Makes the packages that this machine can make, in build/packages, with their check sums:
# tools/package.sh. A Debian package and an archive for machines like this one; an archive for
# Windows and one for 64-bit ARM where there is a cross compiler; the page and its npm package where
# there are Node and the compiler for WebAssembly. The last lines say what was not made. The status is
# 1 when nothing was made, or when a build failed.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
. tools/require_tools.sh
. tools/web_steps.sh

[ $# -eq 0 ] || fail_usage "(no arguments)"
packages=build/packages
require_writable "$packages" build/portable build/windows build/arm64
missing=()
have g++ c++ clang++ || missing+=(g++)
have cmake || missing+=(cmake)
have ninja || missing+=(ninja-build)
have dpkg && missing+=(dpkg-dev file)
require_tools "${missing[@]}"

not_made=()
status=0

# package PRESET GENERATORS
package() {
  local preset=$1 generators=$2
  forget_moved_build "build/$preset"
  cmake --preset "$preset" --no-warn-unused-cli -DBRINDLEMOTH_TESTS=OFF &&
    cmake --build --preset "$preset" --target brindlemoth tablegen &&
    cpack --config "build/$preset/CPackConfig.cmake" -G "$generators" -B "$packages" && return
  not_made+=("$preset: its build failed, see above")
  status=1
}

# needs PACKAGE WHAT: whether the tool is there; otherwise WHAT is not made.
needs() {
  is_there "$1" && return
  not_made+=("$2: it needs the package $1")
  return 1
}

# The archive of the page and the npm package of the engine.
package_web() {
  local tool
  for tool in "${web_tools[@]}"; do
    needs "$tool" "archive of the page" || return 0
  done
  install_web_packages && build_wasm && build_site && package_site && return
  not_made+=("archive of the page: its build failed, see above")
  status=1
}

rm -rf "$packages"
mkdir -p "$packages"
if needs dpkg-dev "Debian package" && needs file "Debian package"; then
  package portable "DEB;TGZ"
else
  package portable TGZ
fi
if needs g++-mingw-w64-x86-64-posix "archive for Windows"; then package windows ZIP; fi
if needs g++-aarch64-linux-gnu "archive for 64-bit ARM Linux"; then package arm64 TGZ; fi
package_web
rm -rf "$packages/_CPack_Packages"

cd "$packages"
if [ -n "$(ls)" ]; then
  sums=$(sha256sum -- *)
  printf "%s\n" "$sums" >SHA256SUMS
  printf '\nMade in %s:\n' "$packages"
  ls -l
else
  status=1
fi
for line in "${not_made[@]}"; do
  echo "Not made: $line"
done
exit $status
