// SPDX-License-Identifier: Apache-2.0
//
// What tests of single calls share: the texts of failures, one context that is called once more at
// the end of each test, and an input that no call may change.

#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include "support/client.h"
#include "support/script_server.h"
#include "support/wire_bytes.h"

namespace hcy::abi {

// A function that answers 42, as a reply and as a server's connection.
inline const double kAnswer = 42.0;
inline std::string answer() { return test::resultOf({test::doubleScalar(kAnswer)}); }
inline std::string answerReply() { return test::httpReply(200, "OK", answer()); }
inline test::Connection answering() { return {test::replyToEach(answerReply())}; }

// One chunk of a chunked body; an empty one is the last.
inline std::string chunk(std::string_view bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string size;
  for (std::size_t left = bytes.size(); left != 0; left /= 16) {
    size.insert(size.begin(), kDigits[left % 16]);
  }
  if (size.empty()) size = "0";
  return size.append("\r\n").append(bytes).append("\r\n");
}

// Where a reply has another number of outputs than the call, what that says.
inline Failure countFailure(int received, int wanted) {
  return genericFailure("Number of outputs received from VORTEN, " + std::to_string(received) +
                        ", do not match the number of left hand side parameters, " +
                        std::to_string(wanted) + ", provided.");
}

inline const Failure kTimedOut = genericFailure("Timeout was reached");
inline const Failure kNoNumber =
    genericFailure("bad lexical cast: source type value could not be interpreted as target");
inline const Failure kOverTheLimit = genericFailure(
    "Failed writing received data to disk/application\n"
    "This might happen if response content size is larger than the response size limit.\n"
    "You can increase response size limit using setResponseSizeLimit method.");

// The status of a call that has nothing to wait for. The shortest time-out is a second, which a
// busy machine may take all the same: such a call is made again, for half a minute.
template <class Call>
int statusInTime(const Context& context, const Call& call) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  int status = call();
  while (status != 0 && context.lastFailure() == kTimedOut &&
         std::chrono::steady_clock::now() < deadline) {
    status = call();
  }
  return status;
}

// Whatever has failed and whatever its settings are, a context can do this: get an empty reply by
// plain HTTP.
inline void expectUsable(const Context& context) {
  const test::ScriptServer server(
      {test::Connection{test::replyToEach(test::httpReply(200, "OK", ""))}});
  const auto call = [&] { return context.feval(server.url(), 0, nullptr); };
  EXPECT_EQ(statusInTime(context, call), 0) << ::testing::PrintToString(context.lastFailure());
}

class CallTest : public ::testing::Test {
 protected:
  CallTest() : input_(hcyCreateDoubleScalar(kInput)) {}

  void TearDown() override {
    if (context_) expectUsable(*context_);
  }

  // Made at the first use, from the settings that the configuration has by then.
  Context& context() {
    if (!context_) context_.emplace(library, config);
    return *context_;
  }

  // The failure of a call with one output, which must be left as it is.
  Failure failureOf(const std::string& url) {
    hcyArray* const untouched = input_.get();
    hcyArray* output = untouched;
    EXPECT_EQ(context().feval(url, 1, &output, {input_.get()}), 1);
    EXPECT_EQ(output, untouched);
    if (output != untouched) hcyDestroyArray(output);
    expectInputUnchanged();
    return context().lastFailure();
  }

  // The number that a successful call returns.
  double resultOf(const std::string& url) {
    Outputs outputs(1);
    const auto call = [&] { return context().feval(url, 1, outputs.data(), {input_.get()}); };
    if (statusInTime(context(), call) != 0) {
      ADD_FAILURE() << ::testing::PrintToString(context().lastFailure());
      return std::numeric_limits<double>::quiet_NaN();
    }
    expectInputUnchanged();
    return hcyGetScalar(outputs[0]);
  }

  Library library;
  Config config{library};

 private:
  static constexpr double kInput = 0.1;

  void expectInputUnchanged() const {
    EXPECT_TRUE(hcyIsDouble(input_.get()));
    EXPECT_EQ(hcyGetNumberOfElements(input_.get()), 1U);
    EXPECT_EQ(hcyGetScalar(input_.get()), kInput);
  }

  OwnedArray input_;
  std::optional<Context> context_;
};

}  // namespace hcy::abi
