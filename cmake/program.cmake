# brindlemoth_program(target component [OPTIONAL]): what both programs have in common beside their
# sources. Each is installed as a component of its own with its manual page; one that is OPTIONAL,
# only if it was built.
include(GNUInstallDirs)
if(WIN32)
  # An archive for Windows is a folder with the programs in it.
  set(CMAKE_INSTALL_BINDIR .)
  set(CMAKE_INSTALL_DOCDIR .)
  enable_language(RC)
endif()

# The date of this version, from the change log.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/CHANGELOG.md)
file(STRINGS CHANGELOG.md heading REGEX "^## ${PROJECT_VERSION}, ")
string(REGEX REPLACE "^.*, " "" release_date "${heading}")
if(NOT release_date MATCHES "^[0-9]+-[0-9]+-[0-9]+$")
  message(FATAL_ERROR "CHANGELOG.md has no line \"## ${PROJECT_VERSION}, YEAR-MONTH-DAY\"")
endif()

function(brindlemoth_program target component)
  install(TARGETS ${target} RUNTIME COMPONENT ${component} ${ARGN})
  if(WIN32)
    # The code page of all texts, names of files among them, is UTF-8.
    set(version_file ${PROJECT_BINARY_DIR}/${target}_version.rc)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/windows/version.rc.in ${version_file} @ONLY)
    target_sources(${target} PRIVATE ${PROJECT_SOURCE_DIR}/cmake/windows/program.rc ${version_file})
    return()
  endif()
  set(page ${PROJECT_BINARY_DIR}/man/${target}.6)
  configure_file(${PROJECT_SOURCE_DIR}/docs/man/${target}.6.in ${page} @ONLY)
  install(CODE "
    if(EXISTS \"$<TARGET_FILE:${target}>\")
      file(INSTALL \"${page}\" DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_MANDIR}/man6\")
    endif()" COMPONENT ${component})
endfunction()
