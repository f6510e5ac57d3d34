#!/usr/bin/env bash
# Makes the packages that this machine can make, in build/packages: tools/package.sh. A Debian
# package and an archive for machines like this one; an archive for Windows and one for 64-bit ARM
# where there is a cross compiler.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
. tools/require_tools.sh

missing=()
have g++ c++ clang++ || missing+=(g++)
have cmake || missing+=(cmake)
have ninja || missing+=(ninja-build)
require_tools "${missing[@]}"

# package PRESET GENERATORS
package() {
  local preset=$1 generators=$2
  forget_moved_build "build/$preset"
  cmake --preset "$preset" -DBRINDLEMOTH_TESTS=OFF
  cmake --build --preset "$preset" --target brindlemoth tablegen
  cpack --config "build/$preset/CPackConfig.cmake" -G "$generators" -B build/packages
}

if have dpkg-shlibdeps && have file; then
  package portable "DEB;TGZ"
else
  echo "${0##*/}: no Debian package; it takes dpkg-dev and file" >&2
  package portable TGZ
fi
if have x86_64-w64-mingw32-g++-posix; then
  package windows ZIP
else
  echo "${0##*/}: no archive for Windows; it takes g++-mingw-w64-x86-64-posix" >&2
fi
if have aarch64-linux-gnu-g++; then
  package arm64 TGZ
else
  echo "${0##*/}: no archive for 64-bit ARM; it takes g++-aarch64-linux-gnu" >&2
fi

rm -rf build/packages/_CPack_Packages
ls -l build/packages
