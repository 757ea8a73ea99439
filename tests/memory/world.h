// SPDX-License-Identifier: Apache-2.0
//
// What the array functions are called on while memory runs out.

#pragma once

#include <string>
#include <vector>

#include "abi/array_kinds.h"

namespace hcy::abi {

// How an array has come about.
enum class Origin {
  Created,   // and filled
  Complex,   // the same, complex
  Empty,     // 0-by-0
  Element,   // a handle over the element of a cell array
  Received,  // in a reply, with all elements
  Bare,      // in a reply that says its dimensions alone
  Roomy,     // sparse, 30-by-30, complex if it can be, room for two stored elements
};

struct ArrayCase {
  ArrayKind kind;
  Origin origin;
};
std::string described(const ArrayCase& arrayCase);

// Every kind with every origin that it can have.
std::vector<ArrayCase> allArrayCases();

struct World {
  explicit World(const ArrayCase& arrayCase);

  Array cell;       // 1-by-2, the first element such an array, the second never set
  Array structure;  // 1-by-2, the first field of the first element such an array, else never set
  Array array;      // the array itself
  Text text;        // a text of the library
};
std::string describe(const World& world);

}  // namespace hcy::abi
