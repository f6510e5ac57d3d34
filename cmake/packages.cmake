# What is installed beside the programs, and the packages that `cpack` makes of all of it: see
# tools/package.sh.
install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT engine)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT engine
  PATTERN man EXCLUDE)
if(NOT WIN32)
  # Front ends that keep to the convention find the engine by this file.
  install(FILES cmake/brindlemoth.eng DESTINATION ${CMAKE_INSTALL_DATADIR}/games/plugins/uci
    COMPONENT engine)
endif()

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
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian/finish.cmake)
include(CPack)
