// SPDX-License-Identifier: Apache-2.0
//
// The calls to libcurl of one transfer, and those of them that fail.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/numeric/conversion/cast.hpp>
#include <cstdint>
#include <memory>
#include <new>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "http/http_client.h"
#include "http/http_response.h"
#include "support/failing_memory.h"
#include "support/process_curl.h"
#include "support/recorded_curl.h"
#include "support/script_server.h"

namespace hcy {
namespace {

using test::Connection;
using test::FailingAllocation;
using test::httpReply;
using test::readRequest;
using test::recordedCurl;
using test::ScriptServer;
using ::testing::ElementsAre;

class RecordedTransfer : public ::testing::Test {
 protected:
  RecordedTransfer() { recordedCurl() = {}; }

  std::unique_ptr<Request> request() {
    std::unique_ptr<Request> made = client().createRequest(server.url());
    made->setBody("body", 4);
    return made;
  }

  QXHttpClient& client() {
    if (!client_) client_ = std::make_unique<QXHttpClient>();
    return *client_;
  }

  const test::ProcessCurl curl;
  ScriptServer server{{Connection{test::replyToEach(httpReply(200, "OK", "fine"))}}};

 private:
  std::unique_ptr<QXHttpClient> client_;
};

TEST_F(RecordedTransfer, setsTheBodyAsPointerAndLargeSize) {
  const std::unique_ptr<Request> made = client().createRequest(server.url());
  recordedCurl().calls.clear();
  made->setBody("body", 4);
  EXPECT_THAT(recordedCurl().calls, ElementsAre("POSTFIELDS", "POSTFIELDSIZE_LARGE=4"));
}

TEST_F(RecordedTransfer, passesOnABodySizeOver32Bits) {
  const std::unique_ptr<Request> made = client().createRequest(server.url());
  recordedCurl().calls.clear();
  made->setBody("body", std::uint64_t{5} << 32);
  EXPECT_THAT(recordedCurl().calls, ElementsAre("POSTFIELDS", "POSTFIELDSIZE_LARGE=21474836480"));
}

TEST_F(RecordedTransfer, setsAllItsOptionsAnewEachTime) {
  const std::unique_ptr<Request> made = request();
  const std::string header =
      "HTTPHEADER=Content-Type: application/x-google-protobuf|User-Agent: Halcyon C client|"
      "Expect: ";
  for (int i = 0; i < 2; ++i) {
    recordedCurl().calls.clear();
    made->perform();
    EXPECT_THAT(recordedCurl().calls,
                ElementsAre("URL=" + server.url(), header, "HEADERFUNCTION", "HEADERDATA",
                            "WRITEFUNCTION", "WRITEDATA", "easy_perform"));
  }
}

class LargeBodies : public RecordedTransfer {
 protected:
  // The options that concern buffers, in a transfer of so many bytes to and from the server.
  std::vector<std::string> bufferOptions(std::size_t sent, std::size_t received) {
    const ScriptServer other(
        {Connection{test::replyToEach(httpReply(200, "OK", std::string(received, 'r')))}});
    const std::string body(sent, 's');
    const std::unique_ptr<Request> made = client().createRequest(other.url());
    made->setBody(body.data(), body.size());
    recordedCurl().calls.clear();
    made->perform();
    std::vector<std::string> options = recordedCurl().calls;
    std::erase_if(options, [](const std::string& call) {
      return call.find("BUFFERSIZE") == std::string::npos;
    });
    return options;
  }
};

TEST_F(LargeBodies, upTo64KiBPassThroughTheBuffersThatLibcurlHas) {
  for (int i = 0; i < 2; ++i) EXPECT_THAT(bufferOptions(65536, 65536), ElementsAre());
}

TEST_F(LargeBodies, areSentThroughALargeBufferThatIsSetOnce) {
  EXPECT_THAT(bufferOptions(65537, 1), ElementsAre("UPLOAD_BUFFERSIZE=524288"));
  EXPECT_THAT(bufferOptions(65537, 1), ElementsAre());
  EXPECT_THAT(bufferOptions(1, 1), ElementsAre());
}

TEST_F(LargeBodies, areReceivedThroughALargeBufferFromTheSecondOn) {
  EXPECT_THAT(bufferOptions(1, 65537), ElementsAre());
  EXPECT_THAT(bufferOptions(1, 1), ElementsAre("BUFFERSIZE=262144"));
  EXPECT_THAT(bufferOptions(1, 65537), ElementsAre());
}

TEST_F(LargeBodies, setTheirBuffersLast) {
  bufferOptions(1, 65537);
  bufferOptions(65537, 1);
  ASSERT_EQ(recordedCurl().calls.size(), 9U);
  EXPECT_THAT(
      std::span(recordedCurl().calls).subspan(5),
      ElementsAre("WRITEDATA", "UPLOAD_BUFFERSIZE=524288", "BUFFERSIZE=262144", "easy_perform"));
}

TEST_F(RecordedTransfer, takesAHeaderLineWholeWhateverBytesItHolds) {
  const std::string line("X-Odd: \0\xFF Content-Length: 7", 27);
  recordedCurl().delivery = {line, ""};
  const std::unique_ptr<Response> response = request()->perform();
  EXPECT_EQ(dynamic_cast<HttpResponse&>(*response).declaredLength(), 7U);
}

TEST_F(RecordedTransfer, takesBodyDataInItemsOfAnySize) {
  recordedCurl().delivery = {"\r\n", "four"};
  const std::unique_ptr<Response> response = request()->perform();
  EXPECT_EQ(std::string(response->bodyData(), response->bodySize()), "four");
}

TEST_F(RecordedTransfer, aFailureLeavesTheHandle) {
  const test::UnlistenedPort port;
  const std::unique_ptr<Request> made = client().createRequest(port.url());
  made->setBody("body", 4);
  EXPECT_THROW(made->perform(), std::runtime_error);
  EXPECT_EQ(recordedCurl().handles, 1);
}

TEST_F(RecordedTransfer, withoutAHandleAClientCannotBeMade) {
  recordedCurl().easyInitFails = true;
  EXPECT_THROW(QXHttpClient{}, std::runtime_error);
  EXPECT_EQ(recordedCurl().count("easy_init"), 1U);
}

TEST_F(RecordedTransfer, aNegativeStatusCodeIsNegativeOverflow) {
  const std::unique_ptr<Request> made = request();
  recordedCurl().responseCode = -1;
  try {
    made->perform();
    ADD_FAILURE() << "nothing was thrown";
  } catch (const boost::numeric::bad_numeric_cast& failure) {
    EXPECT_STREQ(failure.what(), "bad numeric conversion: negative overflow");
  }
  recordedCurl().responseCode.reset();
  EXPECT_EQ(made->perform()->statusCode(), 200U);
}

TEST_F(RecordedTransfer, aBodyThatCannotGrowRefusesThePieceAndKeepsTheEarlierOnes) {
  HttpResponse response(10);
  EXPECT_TRUE(response.appendBody("ab", 2));
  {
    const FailingAllocation failing(0);
    EXPECT_FALSE(response.appendBody("cd", 2));
    EXPECT_TRUE(failing.hasFailed());
  }
  EXPECT_EQ(response.bodySize(), 2U);
  EXPECT_TRUE(response.appendBody("ef", 2));
  EXPECT_EQ(std::string(response.bodyData(), 4), "abef");
}

TEST_F(RecordedTransfer, aResponseWithoutItsFirstByteCannotBeMade) {
  const FailingAllocation failing(0);
  EXPECT_THROW(HttpResponse{10}, std::bad_alloc);
}

TEST_F(RecordedTransfer, withoutRoomInAdvanceABodyGrowsAsItComes) {
  HttpResponse response(10);
  response.addHeaderLine("Content-Length: 4\r\n");
  {
    const FailingAllocation failing(0);
    EXPECT_TRUE(response.appendBody("ab", 2));
    EXPECT_TRUE(failing.hasFailed());
  }
  EXPECT_TRUE(response.appendBody("cd", 2));
  EXPECT_EQ(std::string(response.bodyData(), response.bodySize()), "abcd");
}

}  // namespace
}  // namespace hcy
