// SPDX-License-Identifier: Apache-2.0
//
// Numbers as packed base 128 varints, which is how integers of 16 and 64 bits, characters, truth
// values, dimensions and indices travel.

#pragma once

#include <google/protobuf/repeated_field.h>

#include <cstddef>
#include <cstdint>
#include <span>

#include "memory/element_buffer.h"
#include "wire/bytes.h"

namespace hcy {

// How many varints end in the bytes.
std::size_t countVarints(Bytes packed);

// Appends packed varints, each converted to an element. False if one is broken or cut: then those
// before it are appended. `expected` is the probable number of elements, 0 if it is unknown. If it
// is right, the varints are not counted first; if it is wrong, the same elements are appended, but
// the buffer may keep room for one element per byte.
template <class Element>
bool readPacked(Bytes packed, google::protobuf::RepeatedField<Element>& list);
template <class Element>
bool readPacked(Bytes packed, ElementBuffer& buffer, std::uint64_t expected = 0);

// How many bytes elements take as packed varints. A negative number takes ten.
template <class Element>
std::size_t packedSize(std::span<const Element> elements);
// Writes that many bytes and returns their end.
template <class Element>
std::uint8_t* writePacked(std::span<const Element> elements, std::uint8_t* out);

}  // namespace hcy
