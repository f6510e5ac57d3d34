# What only a Debian package has: its own names for the change logs, a copyright file, and compressed
# manual pages. CPack calls this when the files of a package are in place.
if(CPACK_GENERATOR STREQUAL "DEB")
  set(share ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/share)
  set(doc ${share}/doc/brindlemoth)
  execute_process(COMMAND date -u -R -d ${CPACK_BRINDLEMOTH_DATE}
    OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/changelog.in ${doc}/changelog.Debian @ONLY)
  file(COPY ${CMAKE_CURRENT_LIST_DIR}/copyright DESTINATION ${doc})
  file(RENAME ${doc}/CHANGELOG.md ${doc}/changelog)
  file(GLOB pages ${share}/man/man6/*.6)
  execute_process(COMMAND gzip -9n ${doc}/changelog ${doc}/changelog.Debian ${pages}
    COMMAND_ERROR_IS_FATAL ANY)
  # Whoever builds may keep his files from others.
  execute_process(COMMAND chmod -R u+rwX,go+rX,go-w ${CPACK_TEMPORARY_INSTALL_DIRECTORY}
    COMMAND_ERROR_IS_FATAL ANY)
endif()
