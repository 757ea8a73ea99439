# SPDX-License-Identifier: Apache-2.0
#
# An overlay port that builds the sources it comes with:
#
#   vcpkg install hcyclient --overlay-ports=packaging/vcpkg
#
# In a registry, vcpkg_from_git() or vcpkg_download_distfile() takes the place of the next line.
cmake_path(SET SOURCE_PATH NORMALIZE "${CURRENT_PORT_DIR}/../../..")

# A triplet with static libraries has a static Protocol Buffers, which ends up inside the library.
string(COMPARE EQUAL "${VCPKG_LIBRARY_LINKAGE}" static static_protobuf)
vcpkg_check_linkage(ONLY_DYNAMIC_LIBRARY)
vcpkg_check_features(OUT_FEATURE_OPTIONS features
  FEATURES
    server HCY_BUILD_SERVER
    tools HCY_BUILD_TOOLS)

vcpkg_cmake_configure(
  SOURCE_PATH "${SOURCE_PATH}"
  OPTIONS
    -D HCY_BUILD_TESTS=OFF
    -D HCY_STATIC_PROTOBUF=${static_protobuf}
    ${features})
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(CONFIG_PATH lib/cmake/hcyclient)
vcpkg_fixup_pkgconfig()

set(programs)
if("server" IN_LIST FEATURES)
  list(APPEND programs hcy-local-server)
endif()
if("tools" IN_LIST FEATURES)
  list(APPEND programs hcy)
endif()
if(programs)
  vcpkg_copy_tools(TOOL_NAMES ${programs} AUTO_CLEAN)
endif()

file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/debug/include" "${CURRENT_PACKAGES_DIR}/debug/share")
file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/share/doc")
vcpkg_install_copyright(FILE_LIST "${SOURCE_PATH}/LICENSE")
file(INSTALL "${CURRENT_PORT_DIR}/usage" DESTINATION "${CURRENT_PACKAGES_DIR}/share/${PORT}")
