# SPDX-License-Identifier: Apache-2.0
#
# Finds what a part of the project needs, or stops with one sentence that says what is missing, which
# part needs it, and which package of Debian has it.

# hcy_need_package(name version debian-packages part argument...): find_package(), required. The
# version may be empty. The version that was found, if it is known, is in hcy_found_version.
macro(hcy_need_package name version debian part)
  find_package(${name} ${version} QUIET ${ARGN})
  # The last is set if the package's own configuration is too old; the modules of CMake differ.
  string(TOUPPER ${name} hcy_upper_name)
  foreach(hcy_variable IN ITEMS
      ${name}_VERSION ${hcy_upper_name}_VERSION ${name}_VERSION_STRING ${name}_CONSIDERED_VERSIONS)
    set(hcy_found_version "${${hcy_variable}}")
    if(NOT hcy_found_version STREQUAL "")
      break()
    endif()
  endforeach()
  if(NOT ${name}_FOUND)
    hcy_refuse("${name}" "${version}" "${hcy_found_version}" "${debian}" "${part}")
  endif()
endmacro()

# hcy_need_program(variable program debian-package part argument...): find_program(), required.
macro(hcy_need_program variable program debian part)
  find_program(${variable} ${program} ${ARGN})
  if(NOT ${variable})
    hcy_refuse("${program}" "" "" "${debian}" "${part}")
  endif()
endmacro()

function(hcy_refuse name version found debian part)
  set(what "${name}")
  if(NOT version STREQUAL "")
    string(APPEND what " ${version} or newer")
  endif()
  if(NOT found STREQUAL "")
    string(REPLACE ";" ", " found "${found}")
    set(found ", and only ${found} was found")
  endif()
  message(FATAL_ERROR "${part} need ${what}${found} (in Debian: ${debian}).")
endfunction()
