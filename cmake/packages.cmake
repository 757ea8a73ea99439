# SPDX-License-Identifier: Apache-2.0
#
# Debian packages by CPack, one for each component of the install tree; script/package makes them.
# Their descriptions are in packaging/debian/control, for both kinds of packages.

file(READ ${PROJECT_SOURCE_DIR}/packaging/debian/control control)
if(HCY_STATIC_PROTOBUF)
  string(REPLACE "The library uses the system's shared Protocol Buffers."
    "Protocol Buffers is inside the library." control "${control}")
endif()
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
  ${PROJECT_SOURCE_DIR}/packaging/debian/control ${PROJECT_SOURCE_DIR}/packaging/debian/changelog)

# hcy_add_package(component package section [dependency...]): libraries that its programs are linked
# with are found without being named.
macro(hcy_add_package component package section)
  string(TOUPPER ${component} key)
  if(NOT control MATCHES "\nPackage: ${package}\n([^\n]+\n)*Description: ([^\n]+\n( [^\n]+\n)*)")
    message(FATAL_ERROR "packaging/debian/control has no description of ${package}")
  endif()
  string(STRIP "${CMAKE_MATCH_2}" description)
  string(REPLACE "\n " "\n" CPACK_DEBIAN_${key}_DESCRIPTION "${description}")
  string(JOIN ", " CPACK_DEBIAN_${key}_PACKAGE_DEPENDS ${ARGN})
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${package})
  set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section})
endmacro()

# The version is that of the newest entry in Debian's log of changes.
file(STRINGS ${PROJECT_SOURCE_DIR}/packaging/debian/changelog newest_entry LIMIT_COUNT 1)
if(NOT newest_entry MATCHES "^hcyclient \\(${PROJECT_VERSION}-([0-9]+)\\)")
  message(FATAL_ERROR "packaging/debian/changelog has no entry for ${PROJECT_VERSION} on top")
endif()
set(CPACK_DEBIAN_PACKAGE_RELEASE ${CMAKE_MATCH_1})
set(package_version ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})

# The other kinds of packages name the version, too.
foreach(file IN ITEMS
    conan/conanfile.py conda/meta.yaml rpm/hcyclient.spec vcpkg/hcyclient/vcpkg.json)
  set(file ${PROJECT_SOURCE_DIR}/packaging/${file})
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
  file(STRINGS ${file} line REGEX "[Vv]ersion\"?( =|:) *\"?${PROJECT_VERSION}(\"|$)")
  if(line STREQUAL "")
    message(FATAL_ERROR "${file} does not name the version ${PROJECT_VERSION}")
  endif()
endforeach()

set(CPACK_COMPONENTS_ALL)
hcy_add_package(runtime libhcyclient1 libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/cpack/triggers)
hcy_add_package(development libhcyclient-dev libdevel
  "libhcyclient1 (= ${package_version})")
if(HCY_BUILD_SERVER OR HCY_BUILD_TOOLS)
  hcy_add_package(tools hcyclient-tools devel
  # libhcyclient-server reaches into that library.
  "libhcyclient1 (= ${package_version})")
  if(HCY_BUILD_SERVER)
    set(CPACK_DEBIAN_TOOLS_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/cpack/triggers)
  endif()
endif()

hcy_add_package(python python3-hcyclient python
  "python3:any (>= 3.9)" python3-numpy "libhcyclient1 (>= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS "python3-scipy, python3-pytest, hcyclient-tools")
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
  ${PROJECT_SOURCE_DIR}/packaging/cpack/python/postinst
  ${PROJECT_SOURCE_DIR}/packaging/cpack/python/prerm)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PACKAGE_CONTACT "hcyclient maintainers <maintainers@hcyclient.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/cpack/finish_debian.cmake)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY >=)
include(CPack)
