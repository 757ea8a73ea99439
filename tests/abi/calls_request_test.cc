// SPDX-License-Identifier: Apache-2.0
//
// What a call puts on the wire.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/call_test.h"

namespace hcy::abi {
namespace {

using test::bytesField;
using test::doubleScalar;
using test::numberField;
using test::RawRequest;
using test::ScriptServer;

class CallsRequest : public CallTest {
 protected:
  // The one request of a call without outputs.
  RawRequest requestOf(const std::vector<const hcyArray*>& inputs, const std::string& path = "/f") {
    EXPECT_EQ(context().feval(server.url(path), 0, nullptr, inputs), 0);
    const std::vector<RawRequest> requests = server.requests();
    EXPECT_EQ(requests.size(), 1U);
    return requests.empty() ? RawRequest{} : requests.front();
  }

  ScriptServer server{{test::Connection{test::replyToEach(test::httpReply(200, "OK", ""))}}};
};

// The parameters of a call, from the bytes of its input arrays.
std::string params(std::uint64_t nargout, const std::vector<std::string>& arrays) {
  std::string body = numberField(1, nargout);
  for (const std::string& array : arrays) body += bytesField(2, array);
  return body;
}

TEST_F(CallsRequest, theHeadIsExactlyThis) {
  EXPECT_EQ(requestOf({}, "/stats/linear_fit").head,
            "POST /stats/linear_fit HTTP/1.1\r\n"
            "Host: 127.0.0.1:" +
                std::to_string(server.port()) +
                "\r\n"
                "Accept: */*\r\n"
                "Content-Type: application/x-google-protobuf\r\n"
                "User-Agent: Halcyon C client\r\n"
                "Content-Length: 2\r\n"
                "\r\n");
}

TEST_F(CallsRequest, theUrlIsSentAsItIsQueryIncluded) {
  EXPECT_EQ(requestOf({}, "/a%20b//c?x=1&y=%C3%A9").head.substr(0, 44),
            "POST /a%20b//c?x=1&y=%C3%A9 HTTP/1.1\r\nHost: ");
}

TEST_F(CallsRequest, aFragmentStaysHere) {
  EXPECT_EQ(requestOf({}, "/f#part").head.substr(0, 17), "POST /f HTTP/1.1\r");
}

TEST_F(CallsRequest, nargout0IsPresent) { EXPECT_EQ(requestOf({}).body, std::string("\x08\0", 2)); }

TEST_F(CallsRequest, inputsKeepTheirOrderAndOneMayOccurTwice) {
  const OwnedArray one(hcyCreateDoubleScalar(1));
  const OwnedArray two(hcyCreateDoubleScalar(2));
  EXPECT_EQ(requestOf({one.get(), two.get(), one.get()}).body,
            params(0, {doubleScalar(1), doubleScalar(2), doubleScalar(1)}));
  EXPECT_EQ(hcyGetScalar(one.get()), 1.0);
  EXPECT_EQ(hcyGetScalar(two.get()), 2.0);
}

TEST_F(CallsRequest, aBodyOverOneMebibyteIsSentAtOnceWithoutExpect) {
  const OwnedArray input(hcyCreateDoubleMatrix(1024, 256, hcyREAL));
  const RawRequest request = requestOf({input.get()});
  EXPECT_GT(request.body.size(), std::size_t{2} << 20);
  EXPECT_EQ(request.header("Content-Length"), std::to_string(request.body.size()));
  EXPECT_EQ(request.header("Expect"), std::nullopt);
  EXPECT_EQ(request.header("Transfer-Encoding"), std::nullopt);
}

TEST_F(CallsRequest, inputsMayBeNull) {
  EXPECT_EQ(library->feval(context().get(), server.url().c_str(), 0, nullptr, 5, nullptr), 0);
  EXPECT_EQ(server.requests().at(0).body, params(0, {}));
}

TEST_F(CallsRequest, aNarginBelow1SendsNoInputs) {
  const OwnedArray input(hcyCreateDoubleScalar(1));
  const hcyArray* const inputs[] = {input.get()};
  for (const std::int32_t nargin : {0, -1, INT32_MIN}) {
    EXPECT_EQ(library->feval(context().get(), server.url().c_str(), 0, nullptr, nargin, inputs), 0);
    EXPECT_EQ(server.requests().back().body, params(0, {})) << nargin;
  }
}

TEST_F(CallsRequest, aNegativeNargoutIsSentAndNeverMatches) {
  EXPECT_EQ(context().feval(server.url(), -1, nullptr), 1);
  EXPECT_EQ(context().lastFailure(), countFailure(0, -1));
  EXPECT_EQ(server.requests().at(0).body, params(UINT64_MAX, {}));
}

// The sizes of messages are added up before any byte is written, and one array may occur often.
TEST_F(CallsRequest, over2147483647BytesItIsNotSent) {
  const OwnedArray input(hcyCreateDoubleMatrix(1024, 1024, hcyREAL));  // 8 MiB
  const std::vector<const hcyArray*> inputs(256, input.get());
  EXPECT_EQ(context().feval(server.url(), 0, nullptr, inputs), 1);
  EXPECT_EQ(context().lastFailure(), genericFailure("bad numeric conversion: positive overflow"));
  EXPECT_EQ(server.connections(), 0U);
  EXPECT_EQ(requestOf({}).body, params(0, {}));
}

TEST_F(CallsRequest, aThousandCallsOfOneContextShareOneConnection) {
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(context().feval(server.url(), 0, nullptr), 0);
  EXPECT_EQ(server.requests().size(), 1000U);
  EXPECT_EQ(server.connections(), 1U);
}

TEST_F(CallsRequest, twoContextsHaveAConnectionEach) {
  const Context other(library, config);
  EXPECT_EQ(context().feval(server.url(), 0, nullptr), 0);
  EXPECT_EQ(other.feval(server.url(), 0, nullptr), 0);
  EXPECT_EQ(context().feval(server.url(), 0, nullptr), 0);
  EXPECT_EQ(server.connections(), 2U);
}

TEST_F(CallsRequest, nothingOfAnEarlierCallIsLeftInALaterOne) {
  const OwnedArray large(hcyCreateDoubleMatrix(100, 100, hcyREAL));
  EXPECT_EQ(context().feval(server.url("/large"), 0, nullptr, {large.get()}), 0);
  EXPECT_EQ(context().feval(server.url("/small"), 0, nullptr), 0);
  const RawRequest second = server.requests().at(1);
  EXPECT_EQ(second.head.substr(0, 17), "POST /small HTTP/");
  EXPECT_EQ(second.body, params(0, {}));
}

}  // namespace
}  // namespace hcy::abi
