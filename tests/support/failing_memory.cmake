# SPDX-License-Identifier: Apache-2.0

# hcy_let_memory_fail(target): lets a test program's own objects run out of memory at will.
function(hcy_let_memory_fail target)
  target_sources(${target} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support/failing_memory.cc)
  foreach(allocator IN ITEMS malloc calloc realloc _Znwm _Znam)
    target_link_options(${target} PRIVATE LINKER:--wrap=${allocator})
  endforeach()
endfunction()
