// SPDX-License-Identifier: Apache-2.0
//
// Whole calls while memory runs out, at whichever allocation that happens, in the library, in the
// message library or in libcurl: the call ends as it would have ended, or with the documented
// failure; its inputs are as before, nothing is lost, and the next call on the context succeeds.

#include <gmock/gmock.h>

#include <optional>
#include <utility>

#include "golden/arrays.h"
#include "memory/sweep.h"
#include "support/call_test.h"
#include "support/libcurl_text.h"
#include "support/local_server.h"

namespace hcy::abi {
namespace {

using test::bytesField;
using test::Connection;
using test::httpReply;
using test::numberField;
using testing::AnyOf;

struct Call {
  std::string url;
  std::vector<Value> inputs;
  std::int32_t nargout = 0;
  // How it ends while there is memory; a success gives the first inputs back.
  std::optional<Failure> failure = {};
  // From this one on, outputs are stored although the call fails.
  std::size_t firstStored = SIZE_MAX;
};

class ExhaustedMemoryInACall : public testing::Test {
 protected:
  // On a new connection, and on one that is open already.
  void failEachAllocationOf(const Call& call) {
    for (const bool isWarm : {false, true}) {
      SCOPED_TRACE(isWarm ? "second call of the context" : "first call of the context");
      EXPECT_GT(failEachAllocation(
                    [&](const Shortage& shortage) { return attempt(call, shortage, isWarm); }),
                20U);
      if (HasFailure()) return;
    }
  }

  // A connection that answers each request in one way.
  void failEachAllocationOfCallTo(Connection connection, Call call) {
    const test::ScriptServer canned({std::move(connection)});
    call.url = canned.url();
    failEachAllocationOf(call);
  }

  std::string echo() const { return server_.url("/echo"); }
  std::string url(const std::string& function) const { return server_.url(function); }

  Library library;

 private:
  static std::vector<OwnedArray> made(const std::vector<Value>& values) {
    std::vector<OwnedArray> arrays;
    for (const Value& value : values) arrays.push_back(makeArray(value));
    return arrays;
  }

  static std::vector<const hcyArray*> handles(const std::vector<OwnedArray>& arrays) {
    std::vector<const hcyArray*> handles;
    for (const OwnedArray& array : arrays) handles.push_back(array.get());
    return handles;
  }

  // Whether an allocation failed.
  bool attempt(const Call& call, const Shortage& shortage, bool isWarm) {
    const Config config(library);
    const Context context(library, config);
    const std::vector<OwnedArray> inputs = made(call.inputs);
    if (isWarm) expectEcho(context, inputs, call.inputs);
    Outputs outputs(static_cast<std::size_t>(call.nargout));
    int status = 0;
    bool failed = false;
    {
      const std::vector<const hcyArray*> sent = handles(inputs);
      const test::FailingAllocation failing(shortage.working, shortage.exhaustion);
      status = library->feval(context.get(), call.url.c_str(), call.nargout, outputs.data(),
                              static_cast<std::int32_t>(sent.size()), sent.data());
      failed = failing.hasFailed();
    }
    if (status == 0) {
      EXPECT_FALSE(call.failure);
      expectArrays(outputs, call.inputs, static_cast<std::size_t>(call.nargout));
    } else {
      expectFailure(call, context.lastFailure(), failed);
      expectStored(call, outputs, context.lastFailure() == call.failure);
    }
    for (std::size_t i = 0; i < inputs.size(); ++i) expectArray(inputs[i].get(), call.inputs[i]);
    expectEcho(context, inputs, call.inputs);
    return failed;
  }

  static void expectFailure(const Call& call, const Failure& failure, bool failed) {
    if (failure == call.failure) return;
    EXPECT_TRUE(failed);
    EXPECT_EQ(failure, genericFailure(failure.text));
    // Ours (a reply without memory for its body is refused like one over the limit), and those of
    // libcurl, whose resolver forgets why it failed.
    EXPECT_THAT(failure.text,
                AnyOf("std::bad_alloc", kOverTheLimit.text, test::libcurlText(CURLE_OUT_OF_MEMORY),
                      test::libcurlText(CURLE_COULDNT_RESOLVE_HOST)));
  }

  // The outputs are stored from the last one on, as far as it came to that.
  static void expectStored(const Call& call, const Outputs& outputs, bool isOwnFailure) {
    const auto count = static_cast<std::size_t>(call.nargout);
    for (std::size_t i = 0; i < count; ++i) {
      // The account of the failure may be what there was no memory for.
      if (isOwnFailure) {
        EXPECT_EQ(outputs[i] != nullptr, i >= call.firstStored) << i;
      }
      if (i > 0 && outputs[i - 1] != nullptr) {
        EXPECT_NE(outputs[i], nullptr) << i;
      }
    }
  }

  static void expectArrays(const Outputs& outputs, const std::vector<Value>& values,
                           std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      SCOPED_TRACE("output " + std::to_string(i));
      expectArray(outputs[i], values[i]);
    }
  }

  void expectEcho(const Context& context, const std::vector<OwnedArray>& inputs,
                  const std::vector<Value>& values) {
    Outputs outputs(inputs.size());
    ASSERT_EQ(context.feval(echo(), static_cast<std::int32_t>(inputs.size()), outputs.data(),
                            handles(inputs)),
              0)
        << testing::PrintToString(context.lastFailure());
    expectArrays(outputs, values, inputs.size());
  }

  const test::LocalServer server_;
};

std::vector<GoldenArrays> goldenArrays() {
  std::vector<GoldenArrays> all = goldenNumericArrays();
  for (GoldenArrays& golden : goldenOtherArrays()) all.push_back(std::move(golden));
  return all;
}

class ExhaustedMemoryInACallWith : public ExhaustedMemoryInACall,
                                   public testing::WithParamInterface<GoldenArrays> {};

TEST_P(ExhaustedMemoryInACallWith, inputsAndOutputs) {
  const std::vector<Value>& arrays = GetParam().arrays;
  failEachAllocationOf({echo(), arrays, static_cast<std::int32_t>(arrays.size())});
}

INSTANTIATE_TEST_SUITE_P(All, ExhaustedMemoryInACallWith, testing::ValuesIn(goldenArrays()),
                         [](const auto& golden) { return golden.param.name; });

const std::vector<Value> number = {doubles({1, 1}, {42})};

TEST_F(ExhaustedMemoryInACall, thatTheServerRefuses) {
  failEachAllocationOf({url("/no/such/function"), number, 1, httpFailure(404, "Not Found\r\n")});
}

TEST_F(ExhaustedMemoryInACall, thatRaisesAnErrorWithFrames) {
  const std::vector<Value> inputs = {chars({1, 3}, u"a:b"), chars({1, 7}, u"message"),
                                     doubles({1, 1}, {2})};
  failEachAllocationOf(
      {url("/demo/fail"), inputs, 1,
       vortenFailure("message", "a:b",
                     {{"demo/fail_1", "fail_1", 1}, {"demo/fail_2", "fail_2", 2}})});
}

TEST_F(ExhaustedMemoryInACall, thatGivesTooFewOutputs) {
  failEachAllocationOfCallTo(
      answering(), {{},
                    number,
                    2,
                    genericFailure("Number of outputs received from VORTEN, 1, do not match the "
                                   "number of left hand side parameters, 2, provided.")});
}

TEST_F(ExhaustedMemoryInACall, thatGivesAnOutputOfNoClass) {
  const std::string unserved = numberField(1, 15) + bytesField(2, "\x01\x01");
  const std::string body = test::resultOf({test::doubleScalar(1), unserved, test::doubleScalar(2)});
  failEachAllocationOfCallTo({test::replyToEach(httpReply(200, "OK", body))},
                             {{}, number, 3, genericFailure("dispatch_on_QXType"), 2});
}

TEST_F(ExhaustedMemoryInACall, thatIsRefusedAConnection) {
  const test::UnlistenedPort port;
  failEachAllocationOf(
      {port.url(), number, 1, genericFailure(test::libcurlText(CURLE_COULDNT_CONNECT))});
}

TEST_F(ExhaustedMemoryInACall, whoseReplyIsCut) {
  const std::string whole = answerReply();
  failEachAllocationOfCallTo(
      {test::readRequest(), test::send(whole.substr(0, whole.size() - 1)), test::close()},
      {{}, number, 1, genericFailure("Transferred a partial file")});
}

TEST_F(ExhaustedMemoryInACall, whoseReplyHasNoLength) {
  failEachAllocationOfCallTo(
      {test::readRequest(), test::send("HTTP/1.1 200 OK\r\nX-Content-Length: 4x\r\n\r\nx"),
       test::close()},
      {{},
       number,
       1,
       genericFailure("bad lexical cast: source type value could not be interpreted as target")});
}

}  // namespace
}  // namespace hcy::abi
