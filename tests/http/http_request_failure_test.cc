// SPDX-License-Identifier: Apache-2.0
//
// What perform() throws, and that the same request can be performed again afterwards.

#include <gtest/gtest.h>

#include <boost/lexical_cast/bad_lexical_cast.hpp>
#include <memory>
#include <stdexcept>
#include <string>
#include <typeinfo>

#include "http/http_client.h"
#include "support/process_curl.h"
#include "support/script_server.h"

namespace hcy {
namespace {

using test::Connection;
using test::httpReply;
using test::readRequest;
using test::reset;
using test::ScriptServer;
using test::send;
using test::waitForClose;

const std::string kNoNumber =
    "bad lexical cast: source type value could not be interpreted as target";
const std::string kOverTheLimit =
    "Failed writing received data to disk/application\n"
    "This might happen if response content size is larger than the response size limit.\n"
    "You can increase response size limit using setResponseSizeLimit method.";

class HttpRequestFailure : public ::testing::Test {
 protected:
  // Performs a request that fails with exactly this, and then once more with success.
  template <class Failure>
  void expectFailureThenSuccess(Request& request, const std::string& text) {
    request.setBody("x", 1);
    try {
      request.perform();
      ADD_FAILURE() << "nothing was thrown";
    } catch (const std::exception& failure) {
      EXPECT_NE(dynamic_cast<const Failure*>(&failure), nullptr) << typeid(failure).name();
      EXPECT_EQ(failure.what(), text);
    }
    EXPECT_EQ(request.perform()->statusCode(), 200U);
  }

  template <class Failure>
  void expectFailureThenSuccess(const std::string& reply, const std::string& text) {
    const ScriptServer server({Connection{readRequest(), send(reply), waitForClose()}, answering});
    expectFailureThenSuccess<Failure>(*client.createRequest(server.url()), text);
  }

  const test::ProcessCurl curl;
  const Connection answering{test::replyToEach(httpReply(200, "OK", "fine"))};
  QXHttpClient client;
};

TEST_F(HttpRequestFailure, ofTheTransferIsARuntimeErrorWithLibcurlsText) {
  const ScriptServer server({Connection{readRequest(), reset()}, answering});
  expectFailureThenSuccess<std::runtime_error>(*client.createRequest(server.url()),
                                               "Failure when receiving data from the peer");
}

TEST_F(HttpRequestFailure, ofALengthOverTheLimitIsARuntimeErrorOfThreeLines) {
  expectFailureThenSuccess<std::runtime_error>(
      "HTTP/1.1 200 OK\r\nContent-Length: 67108865\r\n\r\nx", kOverTheLimit);
}

TEST_F(HttpRequestFailure, ofALengthThatIsNoNumberIsTheConversionErrorUnchanged) {
  expectFailureThenSuccess<boost::bad_lexical_cast>(
      "HTTP/1.1 200 OK\r\nX-Content-Length: 4x\r\n\r\nx", kNoNumber);
}

TEST_F(HttpRequestFailure, ofALengthThatIsNoNumberInAnInterimReply) {
  expectFailureThenSuccess<boost::bad_lexical_cast>(
      "HTTP/1.1 103 Early Hints\r\nX-Content-Length: 4x\r\n\r\n" + httpReply(200, "OK", "fine"),
      kNoNumber);
}

TEST_F(HttpRequestFailure, ofALengthThatIsNoNumberInATrailer) {
  expectFailureThenSuccess<boost::bad_lexical_cast>(
      "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n0\r\nX-Content-Length: 4x\r\n\r\n",
      kNoNumber);
}

TEST_F(HttpRequestFailure, doesNotLeaveItsTextToTheNextFailure) {
  const ScriptServer server(
      {Connection{readRequest(), send("HTTP/1.1 200 OK\r\nX-Content-Length: 4x\r\n\r\n"),
                  waitForClose()},
       Connection{readRequest(), reset()}, answering});
  const std::unique_ptr<Request> request = client.createRequest(server.url());
  request->setBody("x", 1);
  EXPECT_THROW(request->perform(), boost::bad_lexical_cast);
  expectFailureThenSuccess<std::runtime_error>(*request,
                                               "Failure when receiving data from the peer");
}

TEST_F(HttpRequestFailure, ofTheLimitIsJudgedByTheLimitAtTheRequestsCreation) {
  const ScriptServer server(
      {Connection{readRequest(), send(httpReply(200, "OK", "fine")), waitForClose()}, answering});
  QXHttpClientConfig config;
  config.setResponseSizeLimit(3);
  QXHttpClient limited(config);
  const std::unique_ptr<Request> earlier = limited.createRequest(server.url());
  const_cast<QXClientConfig&>(limited.getConfig()).setResponseSizeLimit(4);
  const std::unique_ptr<Request> later = limited.createRequest(server.url());
  earlier->setBody("x", 1);
  EXPECT_THROW(earlier->perform(), std::runtime_error);
  EXPECT_EQ(later->perform()->bodySize(), 4U);
}

}  // namespace
}  // namespace hcy
