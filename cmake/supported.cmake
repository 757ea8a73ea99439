# SPDX-License-Identifier: Apache-2.0
#
# Says no to what the library cannot be, before anything is built.

if(CMAKE_SIZEOF_VOID_P AND CMAKE_SIZEOF_VOID_P LESS 8)
  message(FATAL_ERROR "hcyclient needs a 64-bit system: the index arrays of sparse arrays, which are "
    "handed out where they lie, have elements of 64 bits and the type size_t.")
endif()

# Older ones lack parts of C++20 that the sources use.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 12)
  hcy_refuse(gcc 12 ${CMAKE_CXX_COMPILER_VERSION} g++ "The library and the programs")
elseif(CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 14)
  hcy_refuse(clang 14 ${CMAKE_CXX_COMPILER_VERSION} clang "The library and the programs")
endif()

# A static library would bring its Protocol Buffers into a program that may have another, and would
# leave all of its symbols to be seen there.
if(DEFINED BUILD_SHARED_LIBS AND NOT BUILD_SHARED_LIBS)
  set(why "hcyclient is a shared library only. A static one could not hide its symbols, and would put "
    "a second Protocol Buffers into a program that has one of its own.")
  list(JOIN why "" why)
  if(PROJECT_IS_TOP_LEVEL)
    message(FATAL_ERROR "${why} Leave out BUILD_SHARED_LIBS=OFF; HCY_STATIC_PROTOBUF=ON holds "
      "Protocol Buffers inside.")
  endif()
  message(FATAL_ERROR "${why} A project with static libraries of its own sets BUILD_SHARED_LIBS=ON "
    "in a block() around this one, as docs/install.md shows.")
endif()

# The tests call the programs, in the build tree and where they are installed.
if(HCY_BUILD_TESTS)
  foreach(option IN ITEMS HCY_BUILD_SERVER HCY_BUILD_TOOLS HCY_INSTALL)
    if(NOT ${option})
      message(FATAL_ERROR "The tests (HCY_BUILD_TESTS) need ${option}=ON; HCY_BUILD_TESTS=OFF "
        "leaves them out, and HCY_BUILD_UNIT_TESTS=ON builds those that need no programs.")
    endif()
  endforeach()
endif()

# hcy_refuse_unknown_options(): after everything else, stops at an option that nothing has declared,
# which CMake would only warn of.
function(hcy_refuse_unknown_options)
  get_cmake_property(names CACHE_VARIABLES)
  list(FILTER names INCLUDE REGEX "^HCY_")
  # Presets name options of the tests even where no tests are built. The other two are read by
  # cross_debian.cmake.
  list(REMOVE_ITEM names HCY_EXPECTED_SANITIZER HCY_TEST_BY_PROGRAM HCY_TEST_THROUGH_DLOPEN
    HCY_CROSS_PROCESSOR HCY_CROSS_ROOT)
  foreach(name IN LISTS names)
    get_property(type CACHE ${name} PROPERTY TYPE)
    if(type STREQUAL "UNINITIALIZED")
      message(FATAL_ERROR "hcyclient has no option ${name}; docs/install.md lists them. "
        "To drop it from this build directory: -U ${name}")
    endif()
  endforeach()
endfunction()
