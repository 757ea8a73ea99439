# SPDX-License-Identifier: Apache-2.0
#
# Writes the bytes of a file as an array of C++.
#
# cmake -D INPUT=file -D OUTPUT=header.h -D NAME=kBytes -P bytes_to_header.cmake

file(READ "${INPUT}" bytes HEX)
string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
file(WRITE "${OUTPUT}" "// Made from ${INPUT}.\n#pragma once\n\n"
  "inline constexpr unsigned char ${NAME}[] = {${bytes}};\n")
