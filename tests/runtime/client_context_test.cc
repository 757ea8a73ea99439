// SPDX-License-Identifier: Apache-2.0
//
// The account of the last failed call, as a context records it and hands it out.

#include "runtime/client_context.h"

#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>

#include "runtime/error_info.h"

namespace hcy {
namespace {

using client::VORTEN_Error;

class FakeResponse : public Response {
 public:
  const char* bodyData() const override { return ""; }
  std::uint64_t bodySize() const override { return 0; }
  std::uint32_t statusCode() const override { return 404; }
  std::string statusMessage() const override { return "Not Found\r\n"; }
};

VORTEN_Error sampleError() {
  VORTEN_Error error;
  error.set_message("message");
  error.set_identifier("identifier");
  error.set_report("report");
  error.add_stack()->set_name("frame");
  return error;
}

TEST(ClientContext, isEmptyAtFirst) {
  const hcyClientContext context;
  EXPECT_EQ(context.client, nullptr);
  EXPECT_EQ(context.errorKind, 0);
  EXPECT_STREQ(context.errorMessage, "");
  EXPECT_EQ(context.errorDetails, "");
  EXPECT_EQ(context.httpStatus, 0U);
  EXPECT_EQ(context.httpStatusMessage, "");
  EXPECT_EQ(context.vortenError.ByteSizeLong(), 0U);
}

TEST(ClientContext, eachRecordingRewritesItsOwnMembersAndKeepsTheOthers) {
  hcyClientContext context;
  context.setVortenError(sampleError());
  EXPECT_EQ(context.errorKind, HCY_VORTEN_ERROR);
  EXPECT_STREQ(context.errorMessage, "Error was thrown while executing VORTEN code");
  EXPECT_EQ(context.httpStatus, 0U);

  context.setHttpError(FakeResponse());
  EXPECT_EQ(context.errorKind, HCY_HTTP_ERROR);
  EXPECT_STREQ(context.errorMessage, "A non-200 HTTP response was received");
  EXPECT_EQ(context.vortenError.SerializeAsString(), sampleError().SerializeAsString());

  context.setGenericError(std::runtime_error("details"));
  EXPECT_EQ(context.errorKind, HCY_GENERIC_ERROR);
  EXPECT_STREQ(context.errorMessage, "A generic error was thrown");
  EXPECT_EQ(context.httpStatus, 404U);
  EXPECT_EQ(context.httpStatusMessage, "Not Found\r\n");
  EXPECT_EQ(context.vortenError.SerializeAsString(), sampleError().SerializeAsString());

  context.setHttpError(FakeResponse());
  EXPECT_EQ(context.errorDetails, "details");

  context.setVortenError(VORTEN_Error());
  EXPECT_EQ(context.errorKind, HCY_VORTEN_ERROR);
  EXPECT_EQ(context.errorDetails, "details");
  EXPECT_EQ(context.httpStatus, 404U);
  EXPECT_EQ(context.vortenError.ByteSizeLong(), 0U);
}

TEST(ClientContext, keepsTheReportOfAServerError) {
  hcyClientContext context;
  context.setVortenError(sampleError());
  EXPECT_EQ(context.vortenError.report(), "report");
}

TEST(ClientContext, detailsAreTheExceptionsTextHoweverLong) {
  hcyClientContext context;
  const std::string text(100'000, 'x');
  context.setGenericError(std::runtime_error(text));
  EXPECT_EQ(context.errorDetails, text);
  context.setGenericError(std::runtime_error(""));
  EXPECT_EQ(context.errorDetails, "");
  context.setGenericError(std::bad_alloc());
  EXPECT_EQ(context.errorDetails, "std::bad_alloc");
}

TEST(ClientContext, aServerErrorIsNotVisibleInTheRecordOfALaterHttpFailure) {
  hcyClientContext context;
  context.setVortenError(sampleError());
  context.setHttpError(FakeResponse());
  hcyErrorInfo info{};
  getLastErrorInfo(&context, &info);
  EXPECT_EQ(info.kind, HCY_HTTP_ERROR);
  EXPECT_EQ(info.details.http.statusCode, 404U);
  EXPECT_STREQ(info.details.http.statusMessage, "Not Found\r\n");
}

TEST(ClientContext, textsOfARecordAreTheContextsOwn) {
  hcyClientContext context;
  context.setGenericError(std::runtime_error("details"));
  hcyErrorInfo info{};
  getLastErrorInfo(&context, &info);
  EXPECT_EQ(info.message, context.errorMessage);
  EXPECT_EQ(info.details.generic.details, context.errorDetails.c_str());
}

TEST(ClientContext, aRecordOfAnyOtherKindHasOnlyKindAndMessage) {
  hcyClientContext context;
  context.errorKind = 3;
  context.errorMessage = "other";
  hcyErrorInfo info;
  std::memset(&info, 0x5A, sizeof info);
  const auto details = info.details;
  getLastErrorInfo(&context, &info);
  EXPECT_EQ(info.kind, 3);
  EXPECT_STREQ(info.message, "other");
  EXPECT_EQ(std::memcmp(&info.details, &details, sizeof details), 0);
  destroyLastErrorInfo(&info);
  EXPECT_EQ(std::memcmp(&info.details, &details, sizeof details), 0);
}

TEST(ClientContext, aRecordOfDepth0IsNotFreed) {
  hcyErrorInfo info{};
  hcyErrorStackFrame frame{};
  info.kind = HCY_VORTEN_ERROR;
  info.details.vorten.stack = &frame;
  destroyLastErrorInfo(&info);
  EXPECT_EQ(info.details.vorten.stack, &frame);
}

}  // namespace
}  // namespace hcy
