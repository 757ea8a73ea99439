// SPDX-License-Identifier: Apache-2.0
//
// The array functions as a list of calls.

#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "memory/world.h"

namespace hcy::abi {

// What a call gave.
struct Answer {
  Answer() = default;
  Answer(hcyArray* handle) : array(handle) {}
  Answer(char* owned) : text(owned) {}
  template <class Number>
  requires std::is_arithmetic_v<Number> Answer(Number value) : number(static_cast<double>(value)) {}

  Array array = nullptr;
  Text text;
  double number = 0;
};
std::string describe(const Answer& answer);

enum class WhenExhausted {
  Throws,    // std::bad_alloc
  Answers,   // the neutral answer
  NotAtAll,  // allocates nothing
};

struct Operation {
  const char* function;  // the exported function that is called
  const char* how;       // what else tells the calls of one function apart
  WhenExhausted whenExhausted;
  Answer (*call)(World& world);
  double neutral = 0;  // the neutral answer, where it is a number
};

// Those that need no array before them, and those that do.
std::vector<Operation> creations();
std::vector<Operation> lifetimeAndElementOperations();
std::vector<Operation> shapeOperations();
std::vector<Operation> containerOperations();
std::vector<Operation> queries();

}  // namespace hcy::abi
