// SPDX-License-Identifier: Apache-2.0
//
// Replies that the size limit cuts: the call succeeds, and an array that did not arrive whole has
// no elements to read, rather than some or others.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "support/call_test.h"

namespace hcy::abi {
namespace {

using test::bytesField;
using test::Connection;
using test::numberField;
using test::ScriptServer;
using test::varint;

// A double array of m rows and n columns.
std::string doubleMatrix(std::size_t m, std::size_t n, const std::string& contents) {
  return numberField(1, 9) + bytesField(2, varint(m) + varint(n)) + bytesField(25, contents);
}

// A row of that many doubles, each of them 4.
std::string row(std::size_t size) {
  const std::vector<double> values(size, 4.0);
  std::string bytes(size * sizeof(double), '\0');
  std::memcpy(bytes.data(), values.data(), bytes.size());
  return doubleMatrix(1, size, bytesField(1, bytes));
}

std::string chunkedReply(const std::string& body) {
  return "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n" + chunk(body) + chunk("");
}

std::string lowerCaseReply(const std::string& body) {
  return "HTTP/1.1 200 OK\r\ncontent-length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

class CallsCutReply : public CallTest {
 protected:
  void limit(std::size_t bytes) {
    library->setResponseSizeLimit(config.get(), static_cast<std::uint32_t>(bytes));
  }

  // A call with one output that is answered with this.
  void call(const std::string& reply, Outputs& outputs) {
    const ScriptServer server({Connection{test::replyToEach(reply)}});
    const auto once = [&] { return context().feval(server.url(), 1, outputs.data()); };
    ASSERT_EQ(statusInTime(context(), once), 0) << context().lastFailure().text;
    ASSERT_NE(outputs[0], nullptr);
  }

  // An output of that many doubles that are not there.
  static void expectNoElements(const hcyArray* array, std::size_t size) {
    EXPECT_TRUE(hcyIsDouble(array));
    EXPECT_EQ(hcyGetNumberOfElements(array), size);
    EXPECT_EQ(hcyGetN(array), size);
    EXPECT_EQ(hcyGetPr(array), nullptr);
    EXPECT_EQ(hcyGetData(array), nullptr);
    EXPECT_EQ(hcyGetPi(array), nullptr);
    EXPECT_EQ(hcyGetImagData(array), nullptr);
  }

  static void expectFours(const hcyArray* array, std::size_t size) {
    EXPECT_EQ(hcyGetNumberOfElements(array), size);
    ASSERT_NE(hcyGetPr(array), nullptr);
    for (std::size_t i = 0; i < size; ++i) ASSERT_EQ(hcyGetPr(array)[i], 4.0) << i;
  }
};

TEST_F(CallsCutReply, ofTheDefaultLimitInOneChunk) {
  constexpr std::size_t kSize = 8'600'000;
  Outputs outputs(1);
  call(chunkedReply(test::resultOf({row(kSize)})), outputs);
  expectNoElements(outputs[0], kSize);
}

TEST_F(CallsCutReply, withADeclaredLengthInLowerCase) {
  limit(8000);
  Outputs outputs(1);
  call(lowerCaseReply(test::resultOf({row(1000)})), outputs);
  expectNoElements(outputs[0], 1000);
}

TEST_F(CallsCutReply, byOneByte) {
  const std::string body = test::resultOf({row(1000)});
  limit(body.size() - 1);
  for (const std::string& reply : {chunkedReply(body), lowerCaseReply(body)}) {
    Outputs outputs(1);
    call(reply, outputs);
    expectNoElements(outputs[0], 1000);
  }
}

TEST_F(CallsCutReply, byNoByteIsNotCut) {
  const std::string body = test::resultOf({row(1000)});
  limit(body.size());
  for (const std::string& reply : {chunkedReply(body), lowerCaseReply(body)}) {
    Outputs outputs(1);
    call(reply, outputs);
    expectFours(outputs[0], 1000);
  }
}

// The storage is completed with zeros behind what arrived.
TEST_F(CallsCutReply, hasElementsOnceItsDimensionsAreSet) {
  const std::string body = test::resultOf({row(1000)});
  limit(body.size() - 4);
  Outputs outputs(1);
  call(chunkedReply(body), outputs);
  expectNoElements(outputs[0], 1000);
  hcySetM(outputs[0], 1);
  ASSERT_NE(hcyGetPr(outputs[0]), nullptr);
  EXPECT_EQ(hcyGetPr(outputs[0])[998], 4.0);
  EXPECT_EQ(hcyGetPr(outputs[0])[999], 0.0);
}

// Each byte of 4 but the last two is 0: what is left of the number must not be read as one.
TEST_F(CallsCutReply, isNeverAnotherNumber) {
  const std::string body = test::resultOf({test::doubleScalar(4.0)});
  const ScriptServer server({Connection{test::replyToEach(chunkedReply(body))}});
  int outputsSeen = 0;
  for (std::size_t size = 0; size < body.size(); ++size) {
    limit(size);
    const Context cut(library, config);
    Outputs outputs(1);
    if (statusInTime(cut, [&] { return cut.feval(server.url(), 1, outputs.data()); }) != 0) {
      EXPECT_EQ(cut.lastFailure(), countFailure(0, 1)) << size;
      continue;
    }
    ++outputsSeen;
    EXPECT_EQ(hcyGetPr(outputs[0]), nullptr) << size;
    EXPECT_EQ(hcyGetData(outputs[0]), nullptr) << size;
    EXPECT_EQ(hcyGetScalar(outputs[0]), 0.0) << size;  // as documented where there is no element
  }
  EXPECT_GT(outputsSeen, 8);
  limit(body.size());
  EXPECT_EQ(resultOf(server.url()), 4.0);
}

// A cell array that holds 4 and a cell array of two 4s, cut at each byte: an element is whole, or
// it is not there.
TEST_F(CallsCutReply, isNeverAnotherNumberInACellArray) {
  const std::string four = test::doubleScalar(4.0);
  const auto cellOf = [](const std::string& one, const std::string& other) {
    return numberField(1, 13) + bytesField(2, std::string("\x01\x02")) +
           bytesField(28, bytesField(1, one) + bytesField(1, other));
  };
  const std::string body = test::resultOf({cellOf(four, cellOf(four, four))});
  const ScriptServer server({Connection{test::replyToEach(chunkedReply(body))}});
  const auto check = [](const hcyArray* element, std::size_t size) {
    if (element == nullptr) return;
    ASSERT_TRUE(hcyIsDouble(element)) << size;
    ASSERT_NE(hcyGetPr(element), nullptr) << size;
    EXPECT_EQ(*hcyGetPr(element), 4.0) << size;
  };
  for (std::size_t size = body.size() - 60; size <= body.size(); ++size) {
    limit(size);
    const Context cut(library, config);
    Outputs outputs(1);
    ASSERT_EQ(statusInTime(cut, [&] { return cut.feval(server.url(), 1, outputs.data()); }), 0);
    if (!hcyIsCell(outputs[0])) continue;
    check(OwnedArray(hcyGetCell(outputs[0], 0)).get(), size);
    const OwnedArray inner(hcyGetCell(outputs[0], 1));
    EXPECT_EQ(inner != nullptr, size == body.size()) << size;
    if (inner == nullptr) continue;
    check(OwnedArray(hcyGetCell(inner.get(), 0)).get(), size);
    check(OwnedArray(hcyGetCell(inner.get(), 1)).get(), size);
  }
}

}  // namespace
}  // namespace hcy::abi
