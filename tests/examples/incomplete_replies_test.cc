// SPDX-License-Identifier: Apache-2.0
//
// The examples print no number that did not arrive, whatever a reply lacks.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "outcome.h"
#include "support/script_server.h"
#include "support/wire_bytes.h"

namespace hcy::test {
namespace {

using ::testing::HasSubstr;

// Arrays whose elements did not arrive.
std::string missing(unsigned type, const std::string& dimensions, unsigned part) {
  return numberField(1, type) + bytesField(2, dimensions) + bytesField(part, "");
}
const std::string kDoubles = missing(9, "\x03\x01", 25);
const std::string kComplex =
    numberField(1, 9) + bytesField(2, "\x02\x01") +
    bytesField(25, bytesField(1, std::string(16, '\0')) + bytesField(2, std::string(8, '\0')));
const std::string kLogicals = missing(10, "\x03\x01", 26);
const std::string kChars = missing(11, "\x03\x01", 27);
const std::string kStruct = numberField(1, 12) + bytesField(2, "\x02\x01") +
                            bytesField(29, bytesField(1, "name") + bytesField(1, "mean"));
const std::string kCell = missing(13, "\x03\x01", 28);
const std::string kSparse = missing(14, "\x03\x03", 30);
const std::string kSparseValues =
    numberField(1, 14) + bytesField(2, "\x03\x01") +
    bytesField(30, bytesField(2, std::string(1, '\0')) + bytesField(3, std::string("\0\1", 2)));
const std::string kNoDimensions = numberField(1, 9);

// What an example prints whose calls get these arrays, and how it ended.
std::string printed(const std::string& example, const std::vector<std::string>& arrays) {
  const ScriptServer server({Connection{replyToEach(httpReply(200, "OK", resultOf(arrays)))}});
  return run("{ " HCY_EXAMPLE_PROGRAMS "/" + example + " " + server.url() +
             "; echo ended with $?; }")
      .output;
}

// As many as the example for the classes sends.
std::vector<std::string> seventeen(const std::string& array) {
  return std::vector<std::string>(17, array);
}

TEST(IncompleteReplies, areToldFromSolutions) {
  for (const std::string& array : {kDoubles, kSparseValues, kNoDimensions, kCell}) {
    EXPECT_EQ(printed("solve_c", {array}),
              "The output is not three doubles, or not all of them arrived.\nended with 1\n");
  }
  EXPECT_THAT(
      printed("solve_cc", {kDoubles}),
      HasSubstr("output 0 (counted from 0) is incomplete: its dimensions require 3 elements"));
  EXPECT_EQ(printed("sparse_solve_c", {kDoubles}), "no solution\nended with 1\n");
  EXPECT_THAT(printed("sparse_solve_cc", {kDoubles}), HasSubstr("incomplete"));
  EXPECT_EQ(printed("sparse_solve_cc", {doubleScalar(1)}),
            "the product has another length\nended with 1\n");
}

TEST(IncompleteReplies, areSaidToBeIncompleteWhateverTheirClass) {
  for (const std::string& array :
       {kDoubles, kComplex, kLogicals, kStruct, kCell, kSparse, kSparseValues}) {
    EXPECT_THAT(printed("classes_c", seventeen(array)), HasSubstr(" incomplete\n"));
    EXPECT_THAT(printed("classes_c", seventeen(array)), HasSubstr("ended with 0"));
  }
  EXPECT_EQ(printed("classes_c", seventeen(kChars)).substr(0, 15), "char 3-by-1: \nc");
  EXPECT_THAT(printed("classes_c", seventeen(kNoDimensions)), HasSubstr("ended with 0"));
  for (const std::string& array :
       {kDoubles, kComplex, kLogicals, kChars, kSparse, kSparseValues, kNoDimensions}) {
    EXPECT_THAT(printed("classes_cc", seventeen(array)), HasSubstr("output 0"));
  }
  EXPECT_THAT(printed("classes_cc", seventeen(kCell)), HasSubstr("element 0 did not arrive"));
  EXPECT_THAT(printed("classes_cc", seventeen(kStruct)), HasSubstr("field name of element 0 did"));
}

TEST(IncompleteReplies, haveNoElementsToPrint) {
  EXPECT_EQ(printed("cells_and_structs_c", {kCell}),
            "word 0: ?\nword 1: ?\nword 2: ?\nended with 0\n");
  EXPECT_EQ(printed("cells_and_structs_c", {kStruct}), "word 0: ?\nword 1: ?\nended with 0\n");
  EXPECT_THAT(printed("cells_and_structs_cc", {kCell}), HasSubstr("element 0 did not arrive"));
}

}  // namespace
}  // namespace hcy::test
