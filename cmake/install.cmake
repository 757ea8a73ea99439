# SPDX-License-Identifier: Apache-2.0
#
# What `cmake --install` lays out, in three components: `runtime` is what a program needs to run,
# `development` what it needs to be built, `tools` the programs; `python` only where it is asked for.
# No file knows the prefix, so the tree may be moved. The build tree serves other projects too: it
# holds the same CMake package and pkg-config module.
include(CMakePackageConfigHelpers)

set(documents ${CMAKE_INSTALL_DATADIR}/doc/hcyclient)
set(cmake_package ${CMAKE_INSTALL_LIBDIR}/cmake/hcyclient)

install(TARGETS hcyclient EXPORT hcyclientTargets
  LIBRARY COMPONENT runtime NAMELINK_COMPONENT development)
install(TARGETS hcyclient_cpp EXPORT hcyclientTargets)
install(FILES LICENSE DESTINATION ${documents} COMPONENT runtime)

install(DIRECTORY include/hcy DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
if(HCY_INSTALL_DOCS)
  install(FILES README.md CHANGELOG.md CONTRIBUTING.md
    DESTINATION ${documents} COMPONENT development)
  install(DIRECTORY docs examples DESTINATION ${documents} COMPONENT development
    USE_SOURCE_PERMISSIONS
    REGEX "docs/CMakeLists\\.txt$" EXCLUDE
    PATTERN Doxyfile EXCLUDE
    PATTERN check_blocks EXCLUDE
    PATTERN run_code EXCLUDE)
endif()

if(HCY_BUILD_SERVER)
  install(TARGETS hcy-local-server RUNTIME COMPONENT tools)
  # libhcyclient is in the same folder. The headers alone need nothing of this.
  set_target_properties(hcyclient_server PROPERTIES INSTALL_RPATH $ORIGIN)
  install(TARGETS hcyclient_server EXPORT hcyclientServerTargets
    LIBRARY COMPONENT tools NAMELINK_COMPONENT tools)
  install(EXPORT hcyclientServerTargets NAMESPACE hcyclient::
    DESTINATION ${cmake_package} COMPONENT tools)
  export(EXPORT hcyclientServerTargets NAMESPACE hcyclient::
    FILE ${PROJECT_BINARY_DIR}/hcyclientServerTargets.cmake)
  install(FILES server/hcy-local-server.1
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
  if(HCY_INSTALL_DOCS)
    install(FILES server/README.md DESTINATION ${documents}/server COMPONENT tools)
  endif()
endif()

if(HCY_BUILD_TOOLS)
  # The library is found beside it, wherever the tree is.
  cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR
    BASE_DIRECTORY ${CMAKE_INSTALL_FULL_BINDIR} OUTPUT_VARIABLE from_programs)
  set_target_properties(hcy PROPERTIES INSTALL_RPATH "$ORIGIN/${from_programs}")
  install(TARGETS hcy RUNTIME COMPONENT tools)
  install(FILES tools/hcy/hcy.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
  install(FILES tools/hcy/hcy.bash RENAME hcy
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)
  install(FILES tools/hcy/hcy.zsh RENAME _hcy
    DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions COMPONENT tools)
  install(FILES tools/hcy/hcy.fish
    DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT tools)
endif()

# Debian's interpreter finds it there, for the prefix /usr; anywhere else pip is who installs it.
set(dist_packages lib/python3/dist-packages)
configure_file(cmake/METADATA.in ${PROJECT_BINARY_DIR}/python/METADATA @ONLY)
install(DIRECTORY bindings/python/hcyclient DESTINATION ${dist_packages}
  COMPONENT python EXCLUDE_FROM_ALL
  PATTERN __pycache__ EXCLUDE)
# pytest finds its fixtures by this.
file(WRITE ${PROJECT_BINARY_DIR}/python/entry_points.txt
  "[pytest11]\nhcyclient = hcyclient.testing_plugin\n")
install(FILES ${PROJECT_BINARY_DIR}/python/METADATA ${PROJECT_BINARY_DIR}/python/entry_points.txt
  DESTINATION ${dist_packages}/hcyclient-${PROJECT_VERSION}.dist-info
  COMPONENT python EXCLUDE_FROM_ALL)

# The CMake package.
configure_package_config_file(cmake/hcyclientConfig.cmake.in
  ${PROJECT_BINARY_DIR}/hcyclientConfig.cmake
  INSTALL_DESTINATION ${cmake_package}
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/hcyclientConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
export(EXPORT hcyclientTargets NAMESPACE hcyclient:: FILE ${PROJECT_BINARY_DIR}/hcyclientTargets.cmake)
install(EXPORT hcyclientTargets NAMESPACE hcyclient::
  DESTINATION ${cmake_package} COMPONENT development)
install(FILES
  ${PROJECT_BINARY_DIR}/hcyclientConfig.cmake
  ${PROJECT_BINARY_DIR}/hcyclientConfigVersion.cmake
  DESTINATION ${cmake_package} COMPONENT development)

# The pkg-config modules. One of that name with `-uninstalled` is what pkg-config takes first.
set(pc_directory ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
  BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig OUTPUT_VARIABLE to_prefix)
set(pc_prefix "\${pcfiledir}/${to_prefix}")
set(pc_libdir "\${prefix}")
cmake_path(APPEND pc_libdir ${CMAKE_INSTALL_LIBDIR})
set(pc_includedir "\${prefix}")
cmake_path(APPEND pc_includedir ${CMAKE_INSTALL_INCLUDEDIR})
set(pc_protobuf shared)
if(HCY_STATIC_PROTOBUF)
  set(pc_protobuf inside)
endif()
configure_file(cmake/hcyclient.pc.in ${PROJECT_BINARY_DIR}/hcyclient.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/hcyclient.pc DESTINATION ${pc_directory} COMPONENT development)
if(HCY_BUILD_SERVER)
  configure_file(cmake/hcyclient-server.pc.in ${PROJECT_BINARY_DIR}/hcyclient-server.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/hcyclient-server.pc DESTINATION ${pc_directory} COMPONENT tools)
endif()

set(pc_prefix ${PROJECT_BINARY_DIR})
set(pc_libdir ${PROJECT_BINARY_DIR}/src)
set(pc_includedir ${PROJECT_SOURCE_DIR}/include)
configure_file(cmake/hcyclient.pc.in ${PROJECT_BINARY_DIR}/hcyclient-uninstalled.pc @ONLY)
if(HCY_BUILD_SERVER)
  set(pc_libdir ${PROJECT_BINARY_DIR}/server)
  configure_file(cmake/hcyclient-server.pc.in
    ${PROJECT_BINARY_DIR}/hcyclient-server-uninstalled.pc @ONLY)
endif()
