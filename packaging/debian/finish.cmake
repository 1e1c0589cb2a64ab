# SPDX-License-Identifier: MIT
# Run by CPack on what was installed for a package: brings it into the form that Debian asks of one.
if(NOT CPACK_GENERATOR STREQUAL "DEB")
    return()
endif()
set(share ${CPACK_TEMPORARY_DIRECTORY}${CPACK_PACKAGING_INSTALL_PREFIX}/share)
set(doc ${share}/doc/${CPACK_PACKAGE_NAME})

# The system compresses its manual pages and changelogs, and keeps licences in one file of its own form.
file(RENAME ${doc}/CHANGELOG.md ${doc}/changelog)
file(REMOVE ${doc}/LICENSE)
file(COPY ${CPACK_QUILLARY_COPYRIGHT} DESTINATION ${doc})

execute_process(COMMAND date -u -R -d ${CPACK_QUILLARY_RELEASE_DATE} OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE
                COMMAND_ERROR_IS_FATAL ANY)
file(WRITE ${doc}/changelog.Debian
"${CPACK_PACKAGE_NAME} (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) unstable; urgency=medium

  * Release ${CPACK_PACKAGE_VERSION}; changelog.gz says what is new.

 -- ${CPACK_DEBIAN_PACKAGE_MAINTAINER}  ${date}
")
file(CHMOD ${doc}/copyright ${doc}/changelog.Debian PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

file(GLOB pages ${share}/man/man1/*.1)
execute_process(COMMAND ${CPACK_QUILLARY_GZIP} -9nf ${pages} ${doc}/changelog ${doc}/changelog.Debian COMMAND_ERROR_IS_FATAL ANY)
