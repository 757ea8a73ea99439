# SPDX-License-Identifier: Apache-2.0

# hcy_export(target version file): the shared library exports the symbols that the file names, one per
# line, as those of this version; all others stay inside.
function(hcy_export target version file)
  file(STRINGS ${file} exported_names)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
  string(REPLACE ";" ";\n    " exported_names "${exported_names}")
  set(version_script ${CMAKE_CURRENT_BINARY_DIR}/${target}.map)
  file(CONFIGURE OUTPUT ${version_script} @ONLY CONTENT
"@version@ {
  global:
    @exported_names@;
  local:
    *;
};
")
  target_link_options(${target} PRIVATE LINKER:--version-script=${version_script})
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${version_script})
endfunction()
