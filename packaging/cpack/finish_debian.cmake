# SPDX-License-Identifier: Apache-2.0
#
# Run by CPack on the staged tree of each package: what Debian wants under /usr/share/doc/<package>,
# and its manual pages compressed.

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} key)
  set(package ${CPACK_DEBIAN_${key}_PACKAGE_NAME})
  set(share ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr/share)
  set(documents ${share}/doc/${package})

  if(EXISTS ${share}/doc/hcyclient)
    file(RENAME ${share}/doc/hcyclient ${documents})
    file(REMOVE ${documents}/LICENSE)  # every Debian system has it
  endif()
  file(COPY ${CMAKE_CURRENT_LIST_DIR}/../debian/copyright ${CMAKE_CURRENT_LIST_DIR}/../debian/changelog
    DESTINATION ${documents}
    FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
  file(RENAME ${documents}/changelog ${documents}/changelog.Debian)
  file(GLOB pages ${share}/man/man*/*)
  execute_process(COMMAND gzip -9n ${documents}/changelog.Debian ${pages} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
