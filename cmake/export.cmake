# SPDX-License-Identifier: Apache-2.0

# hcy_export(target version file): the shared library exports the symbols that the file names, one per
# line, as those of this version; all others stay inside. HCY_PORTABLE leaves that to the visibility of
# their declarations, and to the linker's own lists on macOS and Windows, which know no versions.
function(hcy_export target version file)
  file(STRINGS ${file} names)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
  set(list ${CMAKE_CURRENT_BINARY_DIR}/${target})
  if(WIN32)
    string(REPLACE ";" "\n  " names "${names}")
    file(CONFIGURE OUTPUT ${list}.def CONTENT "EXPORTS\n  @names@\n" @ONLY)
    target_sources(${target} PRIVATE ${list}.def)
    return()
  elseif(APPLE)
    string(REPLACE ";" "\n_" names "_${names}")
    string(APPEND list .symbols)
    file(CONFIGURE OUTPUT ${list} CONTENT "@names@\n" @ONLY)
    target_link_options(${target} PRIVATE LINKER:-exported_symbols_list,${list})
  elseif(HCY_PORTABLE)
    return()
  else()
    string(REPLACE ";" ";\n    " names "${names}")
    string(APPEND list .map)
    file(CONFIGURE OUTPUT ${list} @ONLY CONTENT
"@version@ {
  global:
    @names@;
  local:
    *;
};
")
    target_link_options(${target} PRIVATE LINKER:--version-script=${list})
  endif()
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${list})
endfunction()

# hcy_link_at_load(target): every function that the shared library calls is found when it is linked, and
# looked up while it is loaded: the loader ends the process where it has no memory to do so later.
function(hcy_link_at_load target)
  if(HCY_PORTABLE)
    return()
  endif()
  target_link_options(${target} PRIVATE LINKER:-z,now)
  if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    # What a sanitizer calls is in the program.
    target_link_options(${target} PRIVATE LINKER:--no-undefined)
  endif()
endfunction()
