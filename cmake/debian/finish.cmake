# What a Debian package wants and other packages do not: its own names for the change logs, and
# manual pages that are compressed. CPack calls this when the files of a package are in place.
if(CPACK_GENERATOR STREQUAL "DEB")
  set(share ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/share)
  set(doc ${share}/doc/brindlemoth)
  string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/changelog.in ${doc}/changelog.Debian @ONLY)
  file(RENAME ${doc}/CHANGELOG.md ${doc}/changelog)
  file(GLOB pages ${share}/man/man6/*.6)
  execute_process(COMMAND gzip -9n ${doc}/changelog ${doc}/changelog.Debian ${pages}
    COMMAND_ERROR_IS_FATAL ANY)
  # Whoever builds may keep his files from others.
  execute_process(COMMAND chmod -R u+rwX,go+rX,go-w ${CPACK_TEMPORARY_INSTALL_DIRECTORY}
    COMMAND_ERROR_IS_FATAL ANY)
endif()
