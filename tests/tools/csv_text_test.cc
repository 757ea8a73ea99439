// SPDX-License-Identifier: Apache-2.0

#include "notations/csv_text.h"

#include <gtest/gtest.h>

#include <string>

#include "arguments/argument.h"
#include "notations/no_notation.h"
#include "notations/raw_text.h"
#include "random_arrays.h"
#include "same_array.h"

namespace hcy::test {
namespace {

using hcyclient::Array;

std::string csvOf(const std::string& argument, char delimiter = ',') {
  try {
    return tools::csvOf(tools::arraysFrom({argument})[0], delimiter);
  } catch (const tools::NoNotation& problem) {
    return problem.what();
  }
}

std::string rawOf(const std::string& argument) {
  return tools::rawText(tools::arraysFrom({argument})[0]);
}

TEST(CsvText, matricesOfNumbersAndText) {
  EXPECT_EQ(csvOf("[[1,2.5],[-3,1e300]]"), "1,2.5\n-3,1e+300\n");
  EXPECT_EQ(csvOf(R"(double:["NaN","Infinity","-Infinity"])"), "NaN,Inf,-Inf\n");
  EXPECT_EQ(csvOf("[true,false]"), "1,0\n");
  EXPECT_EQ(csvOf("int64:[9223372036854775807]"), "9223372036854775807\n");
  EXPECT_EQ(csvOf("[1,2]", '\t'), "1\t2\n");
  EXPECT_EQ(csvOf(R"(char:["ab","c,"])"), "ab\n\"c,\"\n");
  EXPECT_EQ(csvOf(R"([1,"a",true,null])"), "1,a,1,\n");
  EXPECT_EQ(csvOf("[]"), "");
}

TEST(CsvText, onlyVeryLargeAndVerySmallNumbersHaveAnExponent) {
  EXPECT_EQ(csvOf("[100000,300000,1e15,9999999999999998.0,1e16]"),
            "100000,300000,1000000000000000,9999999999999998,1e+16\n");
  EXPECT_EQ(csvOf("[0.0001,0.00009,-0.00012]"), "0.0001,9e-05,-0.00012\n");
  EXPECT_EQ(csvOf("single:[1e15,1e17,0.0001,0.1]"), "999999986991104,1e+17,0.0001,0.1\n");
  EXPECT_EQ(rawOf("100000"), "100000\n");
}

TEST(CsvText, textThatWouldBeReadAsSomethingElseIsInQuotes) {
  EXPECT_EQ(csvOf(R"(["1","NA","","#a"," b","c\"d","e\nf","g"])"),
            "\"1\",\"NA\",\"\",\"#a\",\" b\",\"c\"\"d\",\"e\nf\",g\n");
}

TEST(CsvText, structsAreTablesWithNames) {
  EXPECT_EQ(csvOf(R"([{"name":"a","size":1},{"name":"b","size":2}])"), "name,size\na,1\nb,2\n");
  EXPECT_EQ(csvOf(R"({"x":[[1],[2]],"y":[3,4],"z":{"$cell":["a","b"]}})"), "x,y,z\n1,3,a\n2,4,b\n");
  EXPECT_EQ(csvOf(R"({"name":"a","size":1})"), "name,size\na,1\n");
}

TEST(CsvText, arraysThatAreNotTablesAreRefused) {
  EXPECT_EQ(csvOf(R"([[1],"a"])"), "1,a\n");
  EXPECT_EQ(csvOf(R"([[1,2],"a"])"), "element (0, 0) is not a real number or a string");
  EXPECT_EQ(csvOf(R"([{"x":1},{"x":[1,2]}])"),
            "field x of element (0, 1) is not a real number or a string");
  EXPECT_EQ(csvOf("[[[1,2],[3,4]]]"),
            "an array with more than two dimensions cannot be written as a table");
  EXPECT_EQ(csvOf(R"(complex:{"re":1,"im":2})"), "complex numbers cannot be written as a table");
  EXPECT_EQ(csvOf(R"(sparse:{"rows":1,"cols":1,"entries":[]})"),
            "a sparse array cannot be written as a table");
  EXPECT_EQ(csvOf(R"({"x":[1,2],"y":[1]})"), "field y has 1 element, but field x has 2");
  EXPECT_EQ(csvOf(R"({"x":[[1,2],[3,4]]})"),
            "field x is not a column: it must be a vector or a string");
  EXPECT_EQ(csvOf(R"({"x":{"y":1}})"), "field x is not a column: it must be a vector or a string");
  EXPECT_EQ(csvOf("{}"), "a struct without fields cannot be written as a table");
}

TEST(CsvText, realMatricesAreReadBackToTheLastBit) {
  RandomArrays arrays(4180);
  int written = 0;
  for (int i = 0; i < 20000; ++i) {
    const Array array = arrays.next();
    const bool isMatrix = !array.isCell() && !array.isStruct() && !array.isSparse() &&
                          !array.isComplex() && !array.isText() && array.shape().size() == 2 &&
                          array.size() != 0;
    if (!isMatrix) continue;
    ++written;
    const std::string argument =
        std::string(array.className()) + ":csv:" + tools::csvOf(array, ',');
    ASSERT_EQ(differenceOf(array, tools::arraysFrom({argument})[0]), "") << argument;
  }
  EXPECT_GT(written, 1000);
}

TEST(RawText, textAndNumbersStandAlone) {
  EXPECT_EQ(rawOf(R"("a \"b\"\nc")"), "a \"b\"\nc\n");
  EXPECT_EQ(rawOf(R"(char:["ab","cd"])"), "ab\ncd\n");
  EXPECT_EQ(rawOf(R"("")"), "\n");
  EXPECT_EQ(rawOf("0.1"), "0.1\n");
  EXPECT_EQ(rawOf("int64:9223372036854775807"), "9223372036854775807\n");
  EXPECT_EQ(rawOf(R"(double:"NaN")"), "NaN\n");
  EXPECT_EQ(rawOf("true"), "true\n");
}

TEST(RawText, anythingElseIsJson) {
  EXPECT_EQ(rawOf("[1,2]"), "[1,2]\n");
  EXPECT_EQ(rawOf("int8:[1,2]"), "{\"$int8\":[1,2]}\n");
  EXPECT_EQ(rawOf(R"(complex:{"re":1,"im":2})"), "{\"$complex\":{\"re\":1,\"im\":2}}\n");
  EXPECT_EQ(rawOf("char:[55296]"), "{\"$char\":55296}\n");
  EXPECT_EQ(rawOf(R"({"a":"b"})"), "{\"a\":\"b\"}\n");
}

}  // namespace
}  // namespace hcy::test
