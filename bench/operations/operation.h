// SPDX-License-Identifier: Apache-2.0
//
// What is measured without a network, whether in time or in instructions.

#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace hcy::bench {

struct Operation {
  // Does it that many times.
  using Repeat = std::function<void(std::size_t)>;

  // What is done, to what, and its size, such as "create/double/1".
  std::string name;

  // Makes what the operation works on.
  std::function<Repeat()> prepare;

  // How much of a text is worked on each time; 0 where that says nothing.
  std::size_t bytes = 0;
};

// `makeBody()` makes what is called each time; the loop around it costs no call of its own.
template <class MakeBody>
Operation operation(std::string name, MakeBody makeBody, std::size_t bytes = 0) {
  auto prepare = [makeBody]() -> Operation::Repeat {
    auto body = std::make_shared<decltype(makeBody())>(makeBody());
    return [body](std::size_t count) {
      auto& once = *body;
      for (; count > 0; --count) once();
    };
  };
  return {std::move(name), prepare, bytes};
}

// Keeps the compiler from leaving out what nobody looks at.
template <class Value>
void keep(const Value& value) {
  asm volatile("" : : "r,m"(value) : "memory");
}

using Operations = std::vector<Operation>;

// Defined for the library and, where it makes sense, for plain messages: the same by the same name.
// One process cannot have both, for each brings the message classes.
Operations allOperations();

}  // namespace hcy::bench
