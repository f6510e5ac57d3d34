# What is installed beside the programs, and the packages that `cpack` makes of all of it: see
# tools/package.sh.

# The pages for programmers stay in the sources, so the installed README has no links to them.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/README.md)
file(READ README.md readme)
string(REGEX REPLACE "\\[([^]]+)\\]\\([A-Za-z_/]+\\.md[^)]*\\)" "\\1" readme "${readme}")
string(APPEND readme "\nThese pages and CONTRIBUTING.md are in the sources.\n")
file(WRITE ${PROJECT_BINARY_DIR}/documents/README.md "${readme}")
install(FILES ${PROJECT_BINARY_DIR}/documents/README.md CHANGELOG.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT engine)
install(DIRECTORY docs/images DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs COMPONENT engine
  FILES_MATCHING PATTERN *.png)
if(NOT WIN32)
  # Front ends that keep to the convention find the engine by this file.
  install(FILES cmake/brindlemoth.eng DESTINATION ${CMAKE_INSTALL_DATADIR}/games/plugins/uci
    COMPONENT engine)
endif()

set(program_path "bin/brindlemoth")
set(bench_command "bin/brindlemoth bench")
set(tablegen_command "bin/tablegen --men 4 --out tables")
set(documentation "${CMAKE_INSTALL_DOCDIR}/README.md.")
set(newlines UNIX)
if(WIN32)
  set(program_path "brindlemoth.exe")
  set(bench_command "brindlemoth.exe bench")
  set(tablegen_command "tablegen.exe --men 4 --out tables")
  set(documentation "README.md in this directory.")
  set(newlines WIN32)
endif()
set(CPACK_BRINDLEMOTH_README ${PROJECT_BINARY_DIR}/documents/README.txt)
set(readme_template cmake/archive/README.txt.in)
if(CMAKE_SYSTEM_PROCESSOR STREQUAL wasm32)
  set(readme_template cmake/archive/README-web.txt.in)
endif()
configure_file(${readme_template} ${CPACK_BRINDLEMOTH_README} @ONLY
  NEWLINE_STYLE ${newlines})

set(CPACK_PACKAGE_VENDOR "Brindlemoth developers")
set(CPACK_PACKAGE_CONTACT "Brindlemoth developers <developers@brindlemoth.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "UCI chess engine with a generator of endgame tables")
set(CPACK_PACKAGE_DESCRIPTION_FILE ${PROJECT_SOURCE_DIR}/cmake/debian/description.txt)
string(TOLOWER "${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR}" machine)
set(CPACK_PACKAGE_FILE_NAME ${PROJECT_NAME}-${PROJECT_VERSION}-${machine})
set(CPACK_STRIP_FILES ON)
set(CPACK_GENERATOR TGZ)
if(WIN32)
  set(CPACK_GENERATOR ZIP)
endif()

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_BRINDLEMOTH_DATE ${release_date})
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/archive/finish.cmake
  ${PROJECT_SOURCE_DIR}/cmake/debian/finish.cmake)
include(CPack)
