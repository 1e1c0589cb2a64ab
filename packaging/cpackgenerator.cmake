# SPDX-License-Identifier: MIT
# Read by CPack for each kind of package: the portable archive holds its own component, any other package the rest.
if(CPACK_GENERATOR STREQUAL "TGZ")
    string(REPLACE ";ALL;" ";portable;" CPACK_INSTALL_CMAKE_PROJECTS "${CPACK_INSTALL_CMAKE_PROJECTS}")
endif()
