// SPDX-License-Identifier: Apache-2.0
//
// Functions of this program, which take and give arrays of the C API.

#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "message_memory.h"
#include "value.h"

namespace hcy::server {

// One evaluation, as a function sees it.
class Call {
 public:
  Call(std::vector<Value>& arguments, int wanted, std::size_t most, MessageMemoryShare& memory)
      : inputs(arguments), nargout(wanted), longestReply(most), memory_(memory) {}

  // A function may move inputs to the outputs.
  std::vector<Value>& inputs;
  // A function may leave more outputs than were asked for; they are dropped.
  std::vector<Value> outputs;
  const int nargout;
  // In bytes. A function that makes much of little looks here before it does.
  const std::size_t longestReply;
  // How long the reply waits.
  std::chrono::nanoseconds replyDelay{0};

  // Counts what is about to be allocated; throws std::bad_alloc if calls take too much already.
  void count(std::size_t bytes) { memory_.count(bytes); }

  // Adds an output. An array that is made is counted before it is.
  Array& add(Array array);
  Array& addDoubles(std::size_t rows, std::size_t columns);

 private:
  MessageMemoryShare& memory_;
};

inline constexpr int kAnyNumber = std::numeric_limits<int>::max();

struct Function {
  // Without the leading slash.
  std::string path;
  int minInputs = 0;
  int maxInputs = kAnyNumber;
  int maxOutputs = kAnyNumber;
  // May trust that the number of inputs and of outputs is one that is allowed. All else it checks,
  // and raises a FunctionError; any other exception becomes one.
  std::function<void(Call&)> evaluate;
  // Roughly how many steps it takes, of arguments that nothing is known about; empty if that is in
  // proportion to their size.
  std::function<double(const std::vector<Value>& inputs)> steps;
  // For the index.
  std::string arguments;
  std::string outputs;
  // Whether it runs on the threads that Options::functionThreads asks for, because nothing is known
  // of the time it takes.
  bool isForeign = false;
};

}  // namespace hcy::server
