# One interface target carries what every target of the project is compiled with.
add_library(brindlemoth_settings INTERFACE)

target_compile_options(brindlemoth_settings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion
  $<$<BOOL:${BRINDLEMOTH_WERROR}>:-Werror>
  $<$<CONFIG:Release>:-O3>)

# The portable x86-64 build needs nothing newer than the population count.
if(BRINDLEMOTH_NATIVE)
  target_compile_options(brindlemoth_settings INTERFACE -march=native)
  # A program at a fixed address needs no register for the address of a table: 5% fewer
  # instructions, 2% less time. Packages keep the system's default.
  if(CMAKE_SYSTEM_NAME STREQUAL Linux)
    target_compile_options(brindlemoth_settings INTERFACE -fno-pie)
    target_link_options(brindlemoth_settings INTERFACE -no-pie)
  endif()
elseif(BRINDLEMOTH_MARCH)
  target_compile_options(brindlemoth_settings INTERFACE -march=${BRINDLEMOTH_MARCH})
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$")
  target_compile_options(brindlemoth_settings INTERFACE -mpopcnt)
endif()

if(NOT BRINDLEMOTH_PEXT)
  target_compile_definitions(brindlemoth_settings INTERFACE BRINDLEMOTH_NO_PEXT)
endif()

# Sizes are computed in 64 bits. Those that reach a 32-bit address space are bounded: the hash table
# by its option, a mapping by a check of its own.
if(CMAKE_SYSTEM_PROCESSOR STREQUAL wasm32)
  target_compile_options(brindlemoth_settings INTERFACE -Wno-shorten-64-to-32)
endif()

# A program for Windows is one file.
if(MINGW)
  target_link_options(brindlemoth_settings INTERFACE -static)
endif()

if(BRINDLEMOTH_SANITIZE)
  target_compile_options(brindlemoth_settings INTERFACE
    -fsanitize=${BRINDLEMOTH_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer
    # GCC's instrumentation makes its own library look uninitialised.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  target_link_options(brindlemoth_settings INTERFACE -fsanitize=${BRINDLEMOTH_SANITIZE})
endif()

# GCC writes objects that hold both machine code and the optimiser's form: the programs are linked
# with link-time optimisation, while the tests link the same objects quickly and without it.
set(BRINDLEMOTH_LTO_COMPILE "")
set(BRINDLEMOTH_LTO_LINK "")
set(BRINDLEMOTH_NO_LTO_LINK "")
if(BRINDLEMOTH_LTO AND NOT BRINDLEMOTH_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU"
   AND CMAKE_BUILD_TYPE STREQUAL "Release")
  set(BRINDLEMOTH_LTO_COMPILE -flto=auto -ffat-lto-objects)
  set(BRINDLEMOTH_LTO_LINK -flto=auto -O3)
  set(BRINDLEMOTH_NO_LTO_LINK -fno-lto)
elseif(BRINDLEMOTH_LTO AND CMAKE_SYSTEM_PROCESSOR STREQUAL wasm32)
  # The build for web pages has no tests that would have to link the same objects.
  set(BRINDLEMOTH_LTO_COMPILE -flto)
  set(BRINDLEMOTH_LTO_LINK -flto -O3)
endif()
