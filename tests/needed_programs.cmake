# SPDX-License-Identifier: Apache-2.0
#
# What the tests of whole programs start, and the Python modules that they import: configuring stops if
# something is missing, instead of a test later.

set(needed_by "The tests (HCY_BUILD_TESTS)")

# hcy_need_test_program(program debian-package)
function(hcy_need_test_program program debian)
  string(MAKE_C_IDENTIFIER "HCY_TEST_PROGRAM_${program}" variable)
  hcy_need_program(${variable} ${program} ${debian} "${needed_by}")
  mark_as_advanced(${variable})
endfunction()

hcy_need_test_program(abidw abigail-tools)
hcy_need_test_program(clang++ clang)
hcy_need_test_program(curl curl)
hcy_need_test_program(fish fish)
hcy_need_test_program(groff groff-base)
hcy_need_test_program(mypy mypy)
hcy_need_test_program(openssl openssl)
hcy_need_test_program(pkg-config pkg-config)
hcy_need_test_program(zsh zsh)

# Debian's interpreter runs them.
hcy_need_program(SYSTEM_PYTHON python3 python3 "${needed_by}" PATHS /usr/bin NO_DEFAULT_PATH)
set(find_modules [[
import importlib.util, sys
print(*(name for name in sys.argv[1:] if importlib.util.find_spec(name) is None))
]])
execute_process(
  COMMAND ${SYSTEM_PYTHON} -c ${find_modules}
    distributed hypothesis ipykernel matplotlib nbclient numpy pandas pytest scipy
  OUTPUT_VARIABLE missing OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
if(missing)
  string(REGEX REPLACE "([a-z]+)" "python3-\\1" packages "${missing}")
  hcy_refuse("the Python modules ${missing}" "" "" "${packages}" "${needed_by}")
endif()
