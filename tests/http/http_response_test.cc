// SPDX-License-Identifier: Apache-2.0

#include "http/http_response.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <type_traits>

namespace hcy {
namespace {

using ::testing::ElementsAre;

constexpr std::uint32_t kLimit = 67108864;

std::string bodyOf(const Response& response) {
  return {response.bodyData(), static_cast<std::size_t>(response.bodySize())};
}

std::string statusMessageOf(const std::string& statusLine) {
  HttpResponse response(kLimit);
  response.addHeaderLine(statusLine);
  return response.statusMessage();
}

static_assert(!std::is_copy_constructible_v<HttpResponse>);
static_assert(!std::is_copy_assignable_v<HttpResponse>);

TEST(HttpResponse, isEmptyAtFirst) {
  const HttpResponse response(kLimit);
  EXPECT_EQ(response.statusCode(), 0U);
  EXPECT_EQ(response.statusMessage(), "");
  EXPECT_EQ(response.bodySize(), 0U);
  EXPECT_NE(response.bodyData(), nullptr);
  EXPECT_EQ(response.declaredLength(), 0U);
}

TEST(HttpResponse, storesTheStatusCodeItIsGiven) {
  HttpResponse response(kLimit);
  response.setStatusCode(4294967295);
  EXPECT_EQ(response.statusCode(), 4294967295U);
}

TEST(HttpResponse, bodyGrowsPieceByPieceAndHoldsAnyByte) {
  HttpResponse response(kLimit);
  EXPECT_TRUE(response.appendBody("ab\0", 3));
  EXPECT_TRUE(response.appendBody("\xFF", 1));
  EXPECT_EQ(bodyOf(response), std::string("ab\0\xFF", 4));
}

TEST(HttpResponse, givesTheMemoryOfALargeBodyAway) {
  const std::string small(SpareBlock::kMostKept, 'x');
  const std::string large(SpareBlock::kMostKept + 1, 'x');
  const auto spare = std::make_shared<SpareBlock>();
  std::shared_ptr<void> taken;
  const char* bytes = nullptr;
  {
    HttpResponse response(kLimit, spare);
    response.appendBody(small.data(), small.size());
    EXPECT_EQ(response.takeBody(), nullptr);
    EXPECT_EQ(bodyOf(response), small);
    response.appendBody("x", 1);
    bytes = response.bodyData();
    taken = response.takeBody();
    ASSERT_NE(taken, nullptr);
  }
  EXPECT_TRUE(std::string(bytes, large.size()) == large);
}

TEST(HttpResponse, emptyPieceIsTakenAndChangesNothing) {
  HttpResponse response(kLimit);
  EXPECT_TRUE(response.appendBody(nullptr, 0));
  EXPECT_EQ(response.bodySize(), 0U);
  EXPECT_NE(response.bodyData(), nullptr);
  EXPECT_TRUE(response.appendBody("ab", 2));
  EXPECT_TRUE(response.appendBody(nullptr, 0));
  EXPECT_EQ(bodyOf(response), "ab");
}

TEST(HttpResponse, declaredLengthAtTheLimitIsAccepted) {
  HttpResponse response(kLimit);
  response.addHeaderLine("Content-Length: 67108864\r\n");
  EXPECT_TRUE(response.appendBody("ab", 2));
  EXPECT_EQ(bodyOf(response), "ab");
}

struct Pages {
  std::size_t addressed = 0;
  std::size_t resident = 0;
};

Pages pages() {
  Pages found;
  std::ifstream("/proc/self/statm") >> found.addressed >> found.resident;
  return found;
}

TEST(HttpResponse, declaredLengthIsRoomThatTakesNoMemory) {
  HttpResponse response(UINT32_MAX);
  response.addHeaderLine("Content-Length: 4000000000\r\n");
  const std::size_t before = pages().resident;
  EXPECT_TRUE(response.appendBody("ab", 2));
  EXPECT_LT(pages().resident, before + 2048);
  const char* const body = response.bodyData();
  for (int i = 0; i < 8; ++i) {
    EXPECT_TRUE(response.appendBody(std::string(1 << 20, 'x').data(), 1 << 20));
  }
  EXPECT_EQ(response.bodyData(), body);
}

// With room for no more than a GiB beside what there is.
[[noreturn]] void receiveWithoutRoom() {
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  const rlim_t most = pages().addressed * page + (std::size_t{1} << 30);
  const rlimit addresses{most, most};
  if (setrlimit(RLIMIT_AS, &addresses) != 0) std::exit(2);
  HttpResponse response(UINT32_MAX);
  response.addHeaderLine("Content-Length: 4000000000\r\n");
  std::exit(response.appendBody("ab", 2) && bodyOf(response) == "ab" ? 0 : 1);
}

TEST(HttpResponse, declaredLengthWithoutRoomForItIsNoFailure) {
  EXPECT_EXIT(receiveWithoutRoom(), testing::ExitedWithCode(0), "");
}

TEST(HttpResponse, declaredLengthOneAboveTheLimitRefusesTheFirstPiece) {
  HttpResponse response(kLimit);
  response.addHeaderLine("Content-Length: 67108865\r\n");
  EXPECT_FALSE(response.appendBody("ab", 2));
  EXPECT_EQ(response.bodySize(), 0U);
}

TEST(HttpResponse, declaredLengthOverTheLimitRefusesAnEmptyPieceToo) {
  HttpResponse response(3);
  response.addHeaderLine("Content-Length: 4\r\n");
  EXPECT_FALSE(response.appendBody("", 0));
}

TEST(HttpResponse, declaredLengthThatComesLateRefusesTheNextPieceAndKeepsTheEarlierOnes) {
  HttpResponse response(3);
  EXPECT_TRUE(response.appendBody("ab", 2));
  response.addHeaderLine("Content-Length: 4\r\n");
  EXPECT_FALSE(response.appendBody("c", 1));
  EXPECT_EQ(bodyOf(response), "ab");
}

TEST(HttpResponse, bytesBehindTheLimitAreCountedAndNotKept) {
  HttpResponse response(4);
  EXPECT_TRUE(response.appendBody("abc", 3));
  EXPECT_TRUE(response.appendBody("def", 3));
  EXPECT_TRUE(response.appendBody("ghi", 3));
  EXPECT_EQ(response.bodySize(), 9U);
  EXPECT_EQ(std::string(response.bodyData(), 4), "abcd");
}

TEST(HttpResponse, keepsLessOfABodyThatNobodyReads) {
  HttpResponse response(1000);
  response.keepAtMost(2);
  response.addHeaderLine("Content-Length: 3\r\n");
  EXPECT_TRUE(response.appendBody("abc", 3));
  EXPECT_EQ(response.bodySize(), 3U);
  EXPECT_EQ(std::string(response.bodyData(), 2), "ab");
}

TEST(HttpResponse, limitOf0RefusesOnlyWhatDeclaresALength) {
  HttpResponse response(0);
  EXPECT_TRUE(response.appendBody("a", 1));
  response.addHeaderLine("Content-Length: 1\r\n");
  EXPECT_FALSE(response.appendBody("b", 1));
}

// A limit taken as signed would be negative, and a length cut to 32 bits would be 0.
TEST(HttpResponse, limitAndLengthAreComparedUnsignedAndWhole) {
  HttpResponse largest(4294967295);
  largest.addHeaderLine("Content-Length: 4294967295\r\n");
  EXPECT_TRUE(largest.appendBody("a", 1));
  largest.addHeaderLine("Content-Length: 4294967296\r\n");
  EXPECT_FALSE(largest.appendBody("b", 1));
}

TEST(HttpResponse, statusMessageIsAllBehindTheSecondBlankLineEndIncluded) {
  EXPECT_EQ(statusMessageOf("HTTP/1.1 404 Not Found\r\n"), "Not Found\r\n");
  EXPECT_EQ(statusMessageOf("HTTP/1.1 500 Internal Server Error\r\n"), "Internal Server Error\r\n");
  EXPECT_EQ(statusMessageOf("HTTP/1.1 200 \r\n"), "\r\n");
  EXPECT_EQ(statusMessageOf("HTTP/1.1 200 OK"), "OK");
  EXPECT_EQ(statusMessageOf("HTTP/1.1  200 OK\r\n"), "200 OK\r\n");
}

TEST(HttpResponse, statusMessageIsEmptyWithoutASecondBlank) {
  EXPECT_EQ(statusMessageOf("HTTP/1.1 200\r\n"), "");
  EXPECT_EQ(statusMessageOf("HTTP/1.1\r\n"), "");
  EXPECT_EQ(statusMessageOf(""), "");
}

TEST(HttpResponse, statusMessageIsThatOfTheFirstLineEver) {
  HttpResponse response(kLimit);
  response.addHeaderLine("HTTP/1.1 100 Continue\r\n");
  response.addHeaderLine("\r\n");
  response.addHeaderLine("HTTP/1.1 404 Not Found\r\n");
  EXPECT_EQ(response.statusMessage(), "Continue\r\n");
}

TEST(HttpResponse, statusMessageStaysEmptyWhenTheFirstLineHasNone) {
  HttpResponse response(kLimit);
  response.addHeaderLine("HTTP/1.1 100\r\n");
  response.addHeaderLine("HTTP/1.1 404 Not Found\r\n");
  EXPECT_EQ(response.statusMessage(), "");
}

}  // namespace
}  // namespace hcy
