# An archive gets a README.txt of one screen beside the programs. CPack calls this when the files of
# a package are in place.
if(NOT CPACK_GENERATOR STREQUAL "DEB")
  file(COPY ${CPACK_BRINDLEMOTH_README} DESTINATION ${CPACK_TEMPORARY_INSTALL_DIRECTORY})
endif()
