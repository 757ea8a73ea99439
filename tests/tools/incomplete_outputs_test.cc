// SPDX-License-Identifier: Apache-2.0
//
// Replies in which less arrived than the dimensions name: hcy makes up nothing, and shows nothing.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <string>
#include <vector>

#include "replies.h"
#include "results/exit_status.h"
#include "support/call_test.h"
#include "text/text.h"

namespace hcy::test {
namespace {

using testing::HasSubstr;

const std::string kCause =
    "The size limit for replies may have cut it off; --max-reply BYTES raises the limit.";

// Refused with this text, for a person and as JSON.
void expectRefused(const std::string& array, const std::string& problem) {
  const Outcome shown = called(resultOf({array}));
  EXPECT_EQ(shown.status, tools::kTransportError);
  EXPECT_EQ(shown.output, "hcy: ans" + problem + ".\n     " + kCause + "\n");
  const Outcome json = called(resultOf({array}), "--json");
  EXPECT_EQ(json.status, tools::kTransportError);
  const auto message = tools::quotedJson("ans" + problem + ".\n" + kCause);
  EXPECT_EQ(json.output, R"({"kind":"incomplete","message":)" + message.value_or("") + "}\n");
}

// An array whose dimensions name this many elements, and which has fewer.
void expectFewer(const std::string& array, const std::string& count) {
  expectRefused(
      array, " is incomplete: its dimensions call for " + count + ", but not all of them arrived");
}

TEST(IncompleteOutput, ofEveryKindOfFullArray) {
  expectFewer(arrayOf(kDouble, {1, 3}), "3 elements");
  expectFewer(arrayOf(kDouble, {1, 3}, ""), "3 elements");
  expectFewer(arrayOf(kDouble, {1, 3}, bytesField(1, doubles(2))), "3 elements");
  expectFewer(arrayOf(kDouble, {1, 1}), "1 element");
  expectFewer(arrayOf(kUint8, {2, 2}, bytesField(1, "abc")), "4 elements");
  expectFewer(arrayOf(kUint16, {2, 2}, bytesField(1, packed({1, 2, 3}))), "4 elements");
  expectFewer(arrayOf(kLogical, {1, 2}, bytesField(1, packed({1}))), "2 elements");
  expectFewer(arrayOf(kChar, {1, 2}, bytesField(1, "a")), "2 elements");
  expectFewer(arrayOf(kDouble, {1U << 31U, 1U << 31U}), "4611686018427387904 elements");
}

TEST(IncompleteOutput, imaginaryPartsCountToo) {
  expectFewer(arrayOf(kDouble, {1, 2}, bytesField(1, doubles(2)) + bytesField(2, doubles(1))),
              "2 elements");
  expectFewer(arrayOf(kUint16, {1, 2}, bytesField(1, "ab") + bytesField(2, "a")), "2 elements");
}

TEST(IncompleteOutput, dimensionsMustBeThere) {
  expectRefused(numberField(1, kDouble), " is incomplete: its dimensions did not arrive");
  expectRefused(numberField(1, kSparse), " is incomplete: its dimensions did not arrive");
  expectRefused(numberField(1, kCell), " is incomplete: its dimensions did not arrive");
}

TEST(IncompleteOutput, containersHoldAllTheirElements) {
  const std::string one = doubleScalar(1);
  expectFewer(arrayOf(kCell, {1, 1000000}), "1000000 elements");
  expectFewer(arrayOf(kCell, {1, 3}, bytesField(1, one) + bytesField(1, one)), "3 elements");
  const std::string names = bytesField(1, "a") + bytesField(1, "b");
  expectFewer(arrayOf(kStruct, {1, 1}, names + bytesField(2, one)), "1 element");
  expectFewer(arrayOf(kStruct, {1, 2},
                      names + bytesField(2, one) + bytesField(2, one) + bytesField(2, one)),
              "2 elements");
}

TEST(IncompleteOutput, sparseArraysHaveIndicesAndValues) {
  const std::string named = " is incomplete: its dimensions call for 4 elements, but ";
  const std::string rows = bytesField(2, packed({0, 1}));
  const std::string starts = bytesField(3, packed({0, 1, 2}));
  const std::string noIndices = named + "its sparse indices are missing or invalid";
  expectRefused(arrayOf(kSparse, {2, 2}), noIndices);
  expectRefused(arrayOf(kSparse, {2, 2}, rows + bytesField(16, bytesField(1, doubles(2)))),
                noIndices);
  expectRefused(
      arrayOf(kSparse, {2, 2},
              starts + bytesField(2, packed({0, 2})) + bytesField(16, bytesField(1, doubles(2)))),
      noIndices);
  const std::string noValues = named + "some of its sparse values are missing";
  expectRefused(arrayOf(kSparse, {2, 2}, rows + starts), noValues);
  expectRefused(arrayOf(kSparse, {2, 2}, rows + starts + bytesField(16, bytesField(1, doubles(1)))),
                noValues);
  expectRefused(arrayOf(kSparse, {2, 2},
                        rows + starts +
                            bytesField(16, bytesField(1, doubles(2)) + bytesField(2, doubles(1)))),
                noValues);
  expectRefused(arrayOf(kSparse, {2, 2}, numberField(1, 1) + rows + starts), noValues);
  // The values of sparse single arrays cannot be reached.
  const std::string singles = bytesField(18, bytesField(1, std::string(2 * sizeof(float), 'x')));
  expectRefused(arrayOf(kSparse, {2, 2}, numberField(1, 2) + rows + starts + singles), noValues);
}

TEST(IncompleteOutput, thePlaceIsNamed) {
  const std::string short3 = arrayOf(kDouble, {1, 3}, bytesField(1, doubles(2)));
  const auto cellOf = [](const std::string& second) {
    return arrayOf(kCell, {1, 2}, bytesField(1, doubleScalar(1)) + bytesField(1, second));
  };
  const auto structOf = [](const std::string& value) {
    return arrayOf(kStruct, {1, 1},
                   bytesField(1, "a") + bytesField(1, "b\n") + bytesField(2, doubleScalar(1)) +
                       bytesField(2, value));
  };
  const std::string structs = arrayOf(
      kStruct, {1, 2}, bytesField(1, "c") + bytesField(2, doubleScalar(1)) + bytesField(2, short3));
  expectFewer(short3, "3 elements");
  const std::string fewer =
      " is incomplete: its dimensions call for 3 elements, but not all of them arrived";
  expectRefused(cellOf(short3), ", (0, 1)" + fewer);
  expectRefused(structOf(short3), ", b\\n" + fewer);
  expectRefused(structs, ", (0, 1), c" + fewer);
  expectRefused(cellOf(structOf(structs)), ", (0, 1), b\\n, (0, 1), c" + fewer);

  const Outcome second = called(resultOf({doubleScalar(1), cellOf(short3)}), "-n 2");
  EXPECT_EQ(second.output, "hcy: out 2, (0, 1)" + fewer + ".\n     " + kCause + "\n");
}

TEST(IncompleteOutput, isWhatTheSizeLimitLeavesOfAReplyWithoutALength) {
  const std::string body = resultOf({arrayOf(kDouble, {1000, 1}, bytesField(1, doubles(1000)))});
  const auto calledWithLimit = [&body](std::size_t limit) {
    ScriptServer server({Connection{readRequest(),
                                    send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n" +
                                         abi::chunk(body) + abi::chunk("")),
                                    waitForClose()}});
    return run(HCY_PROGRAM " call " + server.url("/f") + " --max-reply " + std::to_string(limit));
  };
  const Outcome cut = calledWithLimit(body.size() / 2);
  EXPECT_EQ(cut.status, tools::kTransportError);
  EXPECT_EQ(cut.output,
            "hcy: ans is incomplete: its dimensions call for 1000 elements, but not all of "
            "them arrived.\n     " +
                kCause + "\n");
  EXPECT_EQ(calledWithLimit(body.size()).status, tools::kSuccess);
}

TEST(IncompleteOutput, isAFailureOfABenchmark) {
  const Outcome outcome = replied("bench", resultOf({arrayOf(kDouble, {1, 3})}), "--calls 1");
  EXPECT_EQ(outcome.status, tools::kTransportError);
  EXPECT_THAT(outcome.output, HasSubstr("failures  1\n  1  ans is incomplete: "));
}

// The most memory that any program took that this one has run, in bytes.
long mostMemory() {
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  return usage.ru_maxrss * 1024;
}

TEST(ClaimedSize, costsNoMemoryAndIsNotShown) {
  const std::vector<std::string> claims = {
      arrayOf(kDouble, {400000000, 1}),
      arrayOf(kChar, {1, 400000000}),
      arrayOf(kCell, {400000000, 1}),
      arrayOf(kCell, {0, 400000000}),
      arrayOf(kDouble, {400000000, 0}),
      arrayOf(kLogical, {400000000, 0}),
      arrayOf(kChar, {400000000, 0}),
      arrayOf(kStruct, {400000000, 1}),
      arrayOf(kStruct, {400000000, 1}, ""),
      arrayOf(kStruct, {400000000, 1}, bytesField(1, "a")),
      arrayOf(kSparse, {2, 400000000}),
      arrayOf(kSparse, {400000000, 0}, bytesField(3, packed({0})))};
  for (const std::string& claim : claims) {
    for (const std::string options : {"", "--json"}) {
      EXPECT_LT(called(resultOf({claim}), options).output.size(), 300U);
    }
    EXPECT_LT(replied("bench", resultOf({claim}), "--calls 1").output.size(), 600U);
  }
  EXPECT_LT(mostMemory(), 1'000'000'000);  // sanitizers take some themselves
}

TEST(ClaimedSize, emptyArraysAreOnlyTheirDimensions) {
  const std::string array = arrayOf(kDouble, {0, 2147483647});
  EXPECT_EQ(called(resultOf({array})).output, "ans: double 0-by-2147483647\n");
  EXPECT_EQ(called(resultOf({array}), "--json").output,
            "{\"$double\":[],\"$shape\":[0,2147483647]}\n");
  EXPECT_EQ(called(resultOf({arrayOf(kChar, {2147483647, 0})}), "--json").output,
            "{\"$char\":\"\",\"$shape\":[2147483647,0]}\n");
}

TEST(ClaimedSize, structsWithoutFieldsAreOnlyTheirDimensions) {
  const std::string array = arrayOf(kStruct, {400000000, 2});
  EXPECT_EQ(called(resultOf({array})).output, "ans: struct 400000000-by-2 without fields\n");
  EXPECT_EQ(called(resultOf({array}), "--json").output,
            "{\"$struct\":[],\"$fields\":[],\"$shape\":[400000000,2]}\n");
  const std::string one = arrayOf(kStruct, {1, 1});
  EXPECT_EQ(called(resultOf({one})).output, "ans: struct 1-by-1\n");
  EXPECT_EQ(called(resultOf({one}), "--json").output, "{}\n");
}

TEST(ClaimedSize, sparseArraysMayHaveMoreElementsThanFullOnes) {
  // In the last column, the last row.
  const std::string starts = std::string(50000, '\0') + '\x01';
  const auto sparse = [&starts](const std::string& values) {
    return resultOf({arrayOf(kSparse, {50000, 50000},
                             bytesField(2, packed({49999})) + bytesField(3, starts) + values)});
  };
  const std::string real = sparse(bytesField(16, bytesField(1, doubles(1))));
  EXPECT_EQ(called(real).output,
            "ans: sparse double 50000-by-50000, 1 stored\n  (49999, 49999)  0\n");
  EXPECT_EQ(called(real, "--json").output,
            "{\"$sparse\":{\"rows\":50000,\"cols\":50000,\"entries\":[[49999,49999,0]]}}\n");
  const std::string complex =
      sparse(bytesField(16, bytesField(1, doubles(1)) + bytesField(2, doubles(1))));
  EXPECT_EQ(called(complex, "--json").output,
            "{\"$sparse\":{\"rows\":50000,\"cols\":50000,\"entries\":[[49999,49999,0,0]]}}\n");
  const std::string logical = sparse(numberField(1, 1) + bytesField(17, bytesField(1, "\x01")));
  EXPECT_EQ(called(logical, "--json").output,
            "{\"$sparse\":{\"rows\":50000,\"cols\":50000,\"entries\":[[49999,49999,true]]}}\n");
  EXPECT_THAT(replied("bench", real, "--calls 1").output, HasSubstr("failures  none"));
}

TEST(ClaimedSize, subscriptsOfManyDimensionsAreNotRepeatedForEachElement) {
  const std::string dimensions = packed({1, 1, 3}) + std::string(100000, '\x01');
  const std::string numbers = numberField(1, kLogical) + bytesField(2, dimensions) +
                              bytesField(partOf(kLogical), bytesField(1, packed({1, 0, 1})));
  const std::string one = bytesField(1, doubleScalar(1));
  const std::string cell = numberField(1, kCell) + bytesField(2, dimensions) +
                           bytesField(partOf(kCell), one + one + one);
  EXPECT_THAT(called(resultOf({numbers})).output,
              HasSubstr("\n  (:, :, 0)\n  true\n  (:, :, 1)\n  false\n  (:, :, 2)\n  true\n"));
  EXPECT_THAT(called(resultOf({cell})).output, HasSubstr("\n  (2): double 1-by-1 = 1\n"));
}

}  // namespace
}  // namespace hcy::test
