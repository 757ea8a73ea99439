// SPDX-License-Identifier: Apache-2.0
//
// What is written as JSON is read back as the same array.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "arguments/argument.h"
#include "notations/array_json.h"
#include "random_arrays.h"
#include "same_array.h"
#include "support/local_server.h"

namespace hcy::test {
namespace {

using hcyclient::Array;

Array readBack(const std::string& json) { return std::move(tools::arraysFrom({json})[0]); }

TEST(RoundTrip, anArrayBecomesJsonAndThatTheSameArray) {
  RandomArrays arrays(20240229);
  for (int i = 0; i < 20000; ++i) {
    const Array array = arrays.next();
    const std::string json = tools::toJson(array);
    const Array read = readBack(json);
    ASSERT_EQ(differenceOf(array, read), "") << json;
    ASSERT_EQ(tools::toJson(read), json);
  }
}

TEST(RoundTrip, theServerSendsWhatTheJsonSaid) {
  const LocalServer server;
  const hcyclient::Library library;
  hcyclient::Context context{hcyclient::Config(library)};
  RandomArrays arrays(7);
  for (int i = 0; i < 300; ++i) {
    const std::string json = tools::toJson(arrays.next());
    std::vector<Array> inputs;
    inputs.push_back(readBack(json));
    const auto outputs = context.feval(server.url("/echo"), inputs);
    ASSERT_EQ(tools::toJson(outputs[0]), json);
    ASSERT_EQ(differenceOf(inputs[0], readBack(tools::toJson(outputs[0]))), "") << json;
  }
}

}  // namespace
}  // namespace hcy::test
