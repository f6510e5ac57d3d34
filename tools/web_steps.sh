# Sourced by scripts that build what is in web/: its steps. What they print goes to standard error.

# The compiler for WebAssembly, and Node with its package manager.
web_tools=(clang-14 lld-14 wasi-libc libc++-14-dev-wasm32 libc++abi-14-dev-wasm32
  libclang-rt-14-dev-wasm32 cmake ninja-build nodejs npm)

# install_web_packages: the npm packages that web/package-lock.json names, if it changed since.
install_web_packages() {
  local installed=web/node_modules/.package-lock.json
  [ "$installed" -nt web/package-lock.json ] && [ "$installed" -nt web/engine/package.json ] &&
    [ "$installed" -nt web/page/package.json ] && return 0
  npm --prefix web ci >&2 </dev/null || return
  touch "$installed"
}

# build_wasm [CMAKE_OPTION...]: build/wasm/src/brindlemoth.wasm.
build_wasm() {
  forget_moved_build build/wasm
  cmake --preset wasm --no-warn-unused-cli "$@" >&2 </dev/null || return
  cmake --build --preset wasm -j "$(nproc 2>/dev/null || echo 2)" >&2 </dev/null
}

# build_site: the engine package and the page, in web/*/dist.
build_site() {
  local version
  version=$(sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
  if ! grep -qF "\"version\": \"$version\"" web/engine/package.json; then
    echo "${0##*/}: web/engine/package.json has another version than CMakeLists.txt: $version" >&2
    return 1
  fi
  npm --prefix web run build --workspace engine >&2 </dev/null || return
  npm --prefix web run build --workspace page >&2 </dev/null || return
  write_licences >web/page/dist/licences.txt
}

# write_licences: the licences of all that the page is made of, each as its own package has it.
write_licences() {
  local pieces=web/node_modules/cm-chessboard/assets/pieces/standard.svg package
  for package in $(node -p '["engine", "page"].flatMap((part) =>
      Object.keys(require(`./web/${part}/package.json`).dependencies)).join(" ")'); do
    [ "$package" != brindlemoth-engine ] || continue
    node -p '`${process.argv[1]} ${require(`./web/node_modules/${process.argv[1]}/package.json`).version}\n`' "$package"
    cat "web/node_modules/$package"/LICEN[CS]E* || return
    printf '\n%80s\n\n' '' | tr ' ' =
  done
  sed -n '/<!--/,/-->/{//!p}' "$pieces"
  cat web/page/CC-BY-SA-3.0.txt
}

# package_site: the archive of the page, and the npm package of the engine, in build/packages.
package_site() {
  local name
  name=brindlemoth-$(node -p 'require("./web/engine/package.json").version')-web
  rm -rf "build/web/$name"
  mkdir -p "build/web/$name" build/packages
  cp -R web/page/dist/. build/wasm/documents/README.txt "build/web/$name"
  (cd build/web && cmake -E tar cf "../packages/$name.zip" --format=zip "$name")
  npm --prefix web pack --workspace engine --pack-destination "$PWD/build/packages" >&2
}
