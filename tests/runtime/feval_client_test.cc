// SPDX-License-Identifier: Apache-2.0
//
// What a call asks of its client, and what it makes of answers that no server in a test can give.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "hcy.client.VORTENParams.pb.h"
#include "runtime/client_context.h"
#include "runtime/error_info.h"
#include "runtime/feval.h"

namespace hcy {
namespace {

using ::testing::ElementsAre;

struct Answer {
  std::uint32_t status = 200;
  std::string body;
  std::uint64_t claimedSize = 0;  // the size of the body where it is not 0
};

class FakeResponse : public Response {
 public:
  explicit FakeResponse(Answer answer) : answer_(std::move(answer)) {}
  const char* bodyData() const override { return answer_.body.data(); }
  std::uint64_t bodySize() const override {
    return answer_.claimedSize != 0 ? answer_.claimedSize : answer_.body.size();
  }
  std::uint32_t statusCode() const override { return answer_.status; }
  std::string statusMessage() const override { return "message"; }

 private:
  Answer answer_;
};

// Notes the requests that it is asked for and answers each by `answer`.
class FakeClient : public QXClient {
 public:
  explicit FakeClient(std::function<Answer()> answer) : answer_(std::move(answer)) {}

  std::unique_ptr<Request> createRequest(std::string url) override {
    calls.push_back("createRequest " + url);
    return std::make_unique<FakeRequest>(*this);
  }
  const QXClientConfig& getConfig() const override { return config; }

  std::vector<std::string> calls;
  std::string sent;
  QXHttpClientConfig config;

 private:
  struct FakeRequest : Request {
    explicit FakeRequest(FakeClient& maker) : client(maker) {}
    FakeRequest(const FakeRequest&) = delete;
    FakeRequest& operator=(const FakeRequest&) = delete;
    ~FakeRequest() override { client.calls.emplace_back("destroy"); }

    void setBody(const void* bytes, std::uint64_t count) override {
      data = static_cast<const char*>(bytes);
      size = count;
      client.calls.push_back("setBody " + std::to_string(count));
    }
    std::unique_ptr<Response> perform() override {
      client.calls.emplace_back("perform");
      client.sent.assign(data, size);
      return std::make_unique<FakeResponse>(client.answer_());
    }

    FakeClient& client;
    const char* data = nullptr;
    std::size_t size = 0;
  };

  std::function<Answer()> answer_;
};

class FevalClient : public ::testing::Test {
 protected:
  // A call without inputs and outputs.
  int call(const std::function<Answer()>& answer) {
    auto made = std::make_unique<FakeClient>(answer);
    client = made.get();
    client->config.setResponseSizeLimit(limit);
    context.client = std::move(made);
    return feval(&context, "url", 0, nullptr, 0, nullptr);
  }

  std::uint32_t limit = 67108864;
  hcyClientContext context;
  FakeClient* client = nullptr;
};

const char* const kOverflow = "bad numeric conversion: positive overflow";

TEST_F(FevalClient, isAskedForOneRequestWithUrlAndBody) {
  EXPECT_EQ(call([] { return Answer{}; }), 0);
  EXPECT_THAT(client->calls, ElementsAre("createRequest url", "setBody 2", "perform", "destroy"));
  client::VORTEN_Params params;
  EXPECT_TRUE(params.ParseFromString(client->sent));
  EXPECT_TRUE(params.has_nargout());
}

TEST_F(FevalClient, whoseResponseHasABodyOver2147483647BytesFailsTheCall) {
  EXPECT_EQ(call([] { return Answer{200, "", 2147483648}; }), 1);
  EXPECT_EQ(context.errorKind, HCY_GENERIC_ERROR);
  EXPECT_EQ(context.errorDetails, kOverflow);
}

TEST_F(FevalClient, whoseResponseHasABodyOf2147483647BytesIsReadUpToTheLimit) {
  limit = 3;
  EXPECT_EQ(call([] { return Answer{200, "\x12\x01\x0A", 2147483647}; }), 1);
  EXPECT_EQ(context.errorKind, HCY_VORTEN_ERROR);
}

TEST_F(FevalClient, whoseStatusIsNot200IsNotAskedForTheBody) {
  for (const std::uint32_t status : {0U, 199U, 201U, 404U, 4294967295U}) {
    EXPECT_EQ(call([status] { return Answer{status, "", 2147483648}; }), 1);
    EXPECT_EQ(context.errorKind, HCY_HTTP_ERROR);
    EXPECT_EQ(context.httpStatus, status);
    EXPECT_EQ(context.httpStatusMessage, "message");
  }
}

TEST_F(FevalClient, thatThrowsFailsTheCallWithTheExceptionsText) {
  EXPECT_EQ(call([]() -> Answer { throw std::invalid_argument("no such thing"); }), 1);
  EXPECT_EQ(context.errorKind, HCY_GENERIC_ERROR);
  EXPECT_EQ(context.errorDetails, "no such thing");
  EXPECT_EQ(call([]() -> Answer { throw std::bad_alloc(); }), 1);
  EXPECT_EQ(context.errorDetails, "std::bad_alloc");
  EXPECT_EQ(client->calls.back(), "destroy");
}

TEST_F(FevalClient, thatIsMissingFailsTheCall) {
  EXPECT_EQ(feval(&context, "url", 0, nullptr, 0, nullptr), 1);
  EXPECT_EQ(context.errorKind, HCY_GENERIC_ERROR);
  EXPECT_NE(context.errorDetails, "");
}

TEST_F(FevalClient, whoseLimitCutsTheBodyLeavesWhatIsBefore) {
  const std::string error = "\x12\x03\x0A\x01m";
  const std::string filler = "\x9A\x06\x02xx";  // a field that no message has
  limit = 4;
  EXPECT_EQ(call([&] { return Answer{200, filler + error, 0}; }), 0);
  limit = 10;
  EXPECT_EQ(call([&] { return Answer{200, filler + error, 0}; }), 1);
  EXPECT_EQ(context.vortenError.message(), "m");
}

}  // namespace
}  // namespace hcy
