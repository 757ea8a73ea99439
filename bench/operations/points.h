// SPDX-License-Identifier: Apache-2.0
//
// Of what class and size the arrays are that operations work on, and how the operations are named:
// the same for the library and for messages.

#pragma once

#include <cstddef>
#include <string>

namespace hcy::bench {

// By class ID.
inline constexpr const char* classNames[] = {"uint8",   "int8",   "uint16", "int16",  "uint32",
                                             "int32",   "uint64", "int64",  "single", "double",
                                             "logical", "char",   "struct", "cell"};

inline constexpr std::size_t arraySizes[] = {1, 1'000, 1'000'000};
inline constexpr std::size_t textSizes[] = {16, 1'000, 1'000'000};
inline constexpr int fieldCounts[] = {1, 10, 1'000};

// Struct arrays have this many fields where nothing else is said.
inline constexpr int fewFields = 2;

inline std::string fieldName(int number) { return "field" + std::to_string(number); }

inline std::string operationName(const std::string& what, const std::string& to, std::size_t size) {
  return what + "/" + to + "/" + std::to_string(size);
}

}  // namespace hcy::bench
