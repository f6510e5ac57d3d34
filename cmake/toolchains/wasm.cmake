# WebAssembly with WASI from Linux, with Debian's clang and its WASI libraries.
set(CMAKE_SYSTEM_NAME Generic)
set(CMAKE_SYSTEM_PROCESSOR wasm32)
set(CMAKE_CXX_COMPILER clang++-14)
set(CMAKE_CXX_COMPILER_TARGET wasm32-wasi)
set(CMAKE_EXECUTABLE_SUFFIX_CXX .wasm)

# Debian's libc++ is built without exceptions, and a program has one thread and no shared objects.
set(CMAKE_CXX_FLAGS_INIT
  "-msimd128 -fno-exceptions -ftls-model=local-exec -D_WASI_EMULATED_MMAN")
# The stack is as large as other systems give, and lies below the data, so that an overflow traps.
set(CMAKE_EXE_LINKER_FLAGS_INIT
  "-Wl,-z,stack-size=8388608 -Wl,--stack-first -Wl,--strip-all -lwasi-emulated-mman")

set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE NEVER)
