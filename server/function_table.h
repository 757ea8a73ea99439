// SPDX-License-Identifier: Apache-2.0
//
// The functions that are served, by the path of their URL.

#pragma once

#include <google/protobuf/repeated_ptr_field.h>

#include <chrono>
#include <cstddef>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "hcy.client.VORTENArray.pb.h"

namespace hcy::server {

using Array = hcy::client::VORTEN_Array;
using Arrays = google::protobuf::RepeatedPtrField<Array>;

// One evaluation, as a function sees it. Inputs and outputs share an arena, so an array moves
// from one to the other without a copy.
struct Call {
  Arrays& inputs;
  // A function may leave more outputs than were asked for; the caller drops them.
  Arrays& outputs;
  int nargout;
  // In bytes. A function that makes much of little looks here before it does.
  std::size_t longestReply;
  // How long the reply waits.
  std::chrono::nanoseconds replyDelay{0};
};

inline constexpr int kAnyNumber = std::numeric_limits<int>::max();

struct Function {
  // Without the leading slash.
  std::string_view path;
  int minInputs;
  int maxInputs;
  int maxOutputs;
  void (*evaluate)(Call&);
  // Roughly how many steps it takes, of arguments that nothing is known about; null if that is in
  // proportion to their size.
  double (*steps)(const Arrays& inputs);
  std::string_view arguments;
  std::string_view outputs;
};

std::span<const Function> functions();

// Null if there is none.
const Function* findFunction(std::string_view path);

// A function as the server's index has it.
struct ListedFunction {
  std::string name;
  std::string arguments;
  std::string outputs;
};

// The functions for a person, as a table in plain text.
std::string listOfFunctions(const std::vector<ListedFunction>& functions);

// The functions for a program:
// {"functions": [{"name": ..., "arguments": ..., "summary": ...}, ...]}.
std::string functionsAsJson(const std::vector<ListedFunction>& functions);

}  // namespace hcy::server
