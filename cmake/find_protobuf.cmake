# SPDX-License-Identifier: Apache-2.0
#
# Finds Protocol Buffers: protobuf::libprotobuf and protobuf::protoc. With HCY_STATIC_PROTOBUF the
# library is a static one, which has to be position-independent; CMAKE_PREFIX_PATH names the directory of
# another than the system's, or Protobuf_LIBRARY its archive.

set(Protobuf_USE_STATIC_LIBS ${HCY_STATIC_PROTOBUF})
# The package's own configuration knows what it needs; older versions come without one.
find_package(Protobuf CONFIG QUIET)
if(NOT Protobuf_FOUND)
  hcy_need_package(Protobuf 3.21 libprotobuf-dev "The library and the programs" MODULE)
elseif(Protobuf_VERSION VERSION_LESS 3.21)
  hcy_refuse(Protobuf 3.21 ${Protobuf_VERSION} libprotobuf-dev "The library and the programs")
endif()
# One that was built without its compiler goes with the system's, of the same version.
find_program(Protobuf_PROTOC_EXECUTABLE protoc)
if(NOT TARGET protobuf::protoc AND Protobuf_PROTOC_EXECUTABLE)
  add_executable(protobuf::protoc IMPORTED)
  set_target_properties(protobuf::protoc PROPERTIES IMPORTED_LOCATION ${Protobuf_PROTOC_EXECUTABLE})
endif()
if(NOT TARGET protobuf::protoc)
  hcy_refuse(protoc "" "" protobuf-compiler "The library and the programs")
endif()

# What a protoc of another version generates does not compile. Newer versions have a first number that
# depends on the language, which protoc does not print: library 7.36.2, protoc 36.2.
get_target_property(protoc protobuf::protoc LOCATION)
execute_process(COMMAND ${protoc} --version OUTPUT_VARIABLE output ERROR_QUIET)
if(NOT output MATCHES "libprotoc ([0-9]+(\\.[0-9]+)+)")
  message(FATAL_ERROR "${protoc} is not a protoc that runs here (in Debian: protobuf-compiler).")
endif()
set(protoc_version ${CMAKE_MATCH_1})
string(REPLACE "." "\\." pattern "${protoc_version}")
if(NOT Protobuf_VERSION MATCHES "(^|\\.)${pattern}(\\.0)?$")
  message(FATAL_ERROR "The library and the programs need a protoc of the version of Protocol Buffers, "
    "which is ${Protobuf_VERSION}, and ${protoc} has the version ${protoc_version} "
    "(in Debian: protobuf-compiler).")
endif()

if(HCY_STATIC_PROTOBUF)
  set(trial ${PROJECT_BINARY_DIR}/static_protobuf.so)
  try_compile(static_protobuf_links ${PROJECT_BINARY_DIR}/static_protobuf
    ${CMAKE_CURRENT_LIST_DIR}/static_protobuf.cc
    LINK_OPTIONS -shared
    LINK_LIBRARIES protobuf::libprotobuf
    COPY_FILE ${trial}
    OUTPUT_VARIABLE output)
  if(NOT static_protobuf_links)
    file(WRITE ${PROJECT_BINARY_DIR}/static_protobuf.log "${output}")
    message(FATAL_ERROR "No shared library can hold this static Protocol Buffers (the linker's messages "
      "are in ${PROJECT_BINARY_DIR}/static_protobuf.log): HCY_STATIC_PROTOBUF needs one that was built "
      "with -fPIC, which Debian does not have and script/static-protobuf builds, and which "
      "CMAKE_PREFIX_PATH or Protobuf_LIBRARY names.")
  endif()
  # One that an earlier configuration found stays in the cache.
  execute_process(COMMAND ${CMAKE_READELF} -d ${trial} OUTPUT_VARIABLE output)
  if(output MATCHES "NEEDED[^\n]*protobuf")
    message(FATAL_ERROR "Protocol Buffers is a shared library, and HCY_STATIC_PROTOBUF wants an "
      "archive: name its directory by CMAKE_PREFIX_PATH, or the archive by Protobuf_LIBRARY")
  endif()
endif()
