// SPDX-License-Identifier: Apache-2.0
//
// Which numbers arguments can be.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "argument_meaning.h"
#include "support/pki.h"

namespace hcy::test {
namespace {

using testing::HasSubstr;

TEST(Argument, integersThatNoDoubleIsEqualToAreRefusedWithWhatToWrite) {
  EXPECT_EQ(
      refusalOf("9007199254740993"),
      "argument 1, line 1, column 1: this integer cannot be stored exactly as a double; write "
      "int64:9007199254740993 (inside JSON {\"$int64\":9007199254740993}), or "
      "double:9007199254740993 for the nearest double\n"
      "  9007199254740993\n"
      "  ^");
  const std::string refused = "this integer cannot be stored exactly as a double";
  EXPECT_THAT(refusalOf("[1,[-9007199254740993]]"), HasSubstr("column 5: " + refused));
  EXPECT_THAT(refusalOf("[[1,2],[3,9007199254740993]]"), HasSubstr("column 11: " + refused));
  EXPECT_THAT(refusalOf(R"({"a":[1,"x",9007199254740993]})"), HasSubstr("column 13: " + refused));
  EXPECT_THAT(refusalOf("cell:[9007199254740993]"), HasSubstr("column 7: " + refused));
  EXPECT_THAT(refusalOf(R"(complex:{"re":1,"im":9007199254740993})"),
              HasSubstr("column 22: " + refused));
  EXPECT_THAT(refusalOf(R"(sparse:{"rows":1,"cols":1,"entries":[[0,0,9007199254740993]]})"),
              HasSubstr("column 43: " + refused));
  EXPECT_THAT(refusalOf("18446744073709551615"), HasSubstr("write uint64:18446744073709551615 ("));
  EXPECT_THAT(refusalOf("18446744073709551617"),
              HasSubstr("write double:18446744073709551617 (inside JSON "
                        "{\"$double\":18446744073709551617}) for the nearest double\n"));
  EXPECT_THAT(refusalOf("1" + std::string(300, '0')), HasSubstr("write double:… "));

  const TestDirectory directory;
  EXPECT_THAT(refusalOf("@" + directory.write("a.json", "[1,\n9007199254740993]")),
              HasSubstr("line 2, column 1: " + refused));
  EXPECT_THAT(refusalOf("@" + directory.write("a.csv", "1,2\n3,9007199254740993\n")),
              HasSubstr("line 2, column 3: " + refused));
  EXPECT_THAT(refusalOf("@" + directory.write("b.csv", "x,2\nx,9007199254740993\n")),
              HasSubstr("line 2, column 3: " + refused));
}

TEST(Argument, aTableOfLargeIntegersNeedsAClassBeforeTheFile) {
  const TestDirectory directory;
  EXPECT_THAT(refusalOf("@" + directory.write("a.csv", "1,9007199254740993\n")),
              HasSubstr("write int64:@FILE, or double:@FILE for the nearest double\n"));
  EXPECT_THAT(refusalOf("@" + directory.write("b.csv", "18446744073709551615\n")),
              HasSubstr("write uint64:@FILE, or "));
  EXPECT_THAT(refusalOf("@" + directory.write("c.csv", "18446744073709551617\n")),
              HasSubstr("write double:@FILE for the nearest double\n"));
  EXPECT_THAT(refusalOf("@" + directory.write("d.csv", "x\n9007199254740993\ny\n")),
              HasSubstr("put it in double quotes to read it as text\n"));
}

TEST(Argument, numbersThatJsonWritesInAnotherWayAreAnsweredByTheirJson) {
  const std::string point = "in JSON, a number cannot begin with a decimal point; write ";
  const std::string plus = "in JSON, a number cannot begin with a plus sign; write ";
  EXPECT_THAT(refusalOf(".5"), HasSubstr("column 1: " + point + "0.5\n"));
  EXPECT_THAT(refusalOf("-.5"), HasSubstr("column 1: " + point + "-0.5\n"));
  EXPECT_THAT(refusalOf("+.5e3"), HasSubstr("column 1: " + point + "0.5e3\n"));
  EXPECT_THAT(refusalOf("+5"), HasSubstr("column 1: " + plus + "5\n"));
  EXPECT_THAT(refusalOf("[1,-.25]"), HasSubstr("column 4: " + point + "-0.25\n"));
  EXPECT_THAT(refusalOf(R"({"a":+1.5})"), HasSubstr("column 6: " + plus + "1.5\n"));
  EXPECT_THAT(refusalOf("."), HasSubstr("bad JSON"));
  EXPECT_THAT(refusalOf("-"), HasSubstr("bad JSON"));
  EXPECT_THAT(refusalOf("+-5"), HasSubstr("column 1: " + plus + "-5\n"));
  EXPECT_THAT(refusalOf("+NaN"), HasSubstr("JSON"));
}

TEST(Argument, integersThatADoubleIsEqualToAreTaken) {
  EXPECT_EQ(meaningOf("9007199254740992"), "double 9007199254740992");
  EXPECT_EQ(meaningOf("-9007199254740994"), "double -9007199254740994");
  EXPECT_EQ(meaningOf("9223372036854775808"), "double 9.223372036854776e+18");
  EXPECT_EQ(meaningOf("100000000000000000000"), "double 1e+20");
  EXPECT_EQ(meaningOf("9007199254740993.0"), "double 9007199254740992");
  EXPECT_EQ(meaningOf("9.007199254740993e15"), "double 9007199254740992");
  EXPECT_EQ(meaningOf("double:9007199254740993"), "double 9007199254740992");
  EXPECT_EQ(meaningOf(R"({"$double":[9007199254740993]})"), "double 9007199254740992");
  EXPECT_EQ(meaningOf("int64:9007199254740993"), R"(int64 {"$int64":9007199254740993})");
  EXPECT_EQ(meaningOf(R"(int64:complex:{"re":9007199254740993,"im":0})"),
            R"(int64 {"$int64":{"$complex":{"re":9007199254740993,"im":0}}})");
  const TestDirectory directory;
  EXPECT_EQ(meaningOf("@" + directory.write("a.csv", "0000000000000000000001,+5\n")),
            "double [1,5]");
  EXPECT_EQ(meaningOf("int64:@" + directory.write("b.csv", "9007199254740993\n")),
            R"(int64 {"$int64":9007199254740993})");
}

TEST(Argument, numbersThatJsonDoesNotHaveAreRefusedWithWhatToWrite) {
  EXPECT_EQ(refusalOf("[1,NaN]"),
            "argument 1, line 1, column 4: JSON has no NaN; write it in quotes, with a class: "
            "double:[1,\"NaN\"], or inside JSON {\"$double\":[1,\"NaN\"]}\n"
            "  [1,NaN]\n"
            "     ^");
  EXPECT_THAT(refusalOf("[ -Infinity]"), HasSubstr("column 3: JSON has no -Infinity; write it"));
  EXPECT_THAT(refusalOf("[-inf]"), HasSubstr("column 2: JSON has no -Infinity; write it"));
  EXPECT_THAT(refusalOf("[1,nan]"), HasSubstr("column 4: JSON has no NaN; write it"));
  EXPECT_THAT(refusalOf("[1, Inf]"), HasSubstr("column 5: JSON has no Infinity; write it"));
  EXPECT_THAT(refusalOf("[1,nanny]"), HasSubstr("column 5: bad JSON: invalid literal"));
  EXPECT_THAT(refusalOf("Infinity"), HasSubstr(R"({"$double":[1,"Infinity"]})"));
  EXPECT_THAT(refusalOf("-NaN"), HasSubstr("column 1: JSON has no NaN"));
  for (const std::string number : {"NaN", "nan", "Infinity", "inf"}) {
    EXPECT_THAT(refusalOf(number), testing::Not(HasSubstr("(for text")));
  }
}

TEST(Argument, valuesThatDoNotFitAreRefused) {
  EXPECT_THAT(refusalOf("1e999"), HasSubstr("too large for a double"));
  EXPECT_THAT(refusalOf("single:1e39"), HasSubstr("too large for a single"));
  EXPECT_THAT(refusalOf("int8:1.5"), HasSubstr("must be an integer"));
  EXPECT_THAT(refusalOf("int64:9223372036854775808"), HasSubstr("must be between"));
  EXPECT_THAT(refusalOf("int64:9007199254740993.0"), HasSubstr("without a decimal point"));
  EXPECT_THAT(refusalOf("uint64:1e400"), HasSubstr("too large"));
  EXPECT_THAT(refusalOf("uint8:-1"), HasSubstr("must be between 0 and 255"));
  EXPECT_THAT(refusalOf("logical:2"), HasSubstr("expected true or false"));
  EXPECT_THAT(refusalOf("char:65536"), HasSubstr("must be between 0 and 65535"));
  EXPECT_THAT(refusalOf("int8:true"), HasSubstr("expected a number"));
  EXPECT_THAT(refusalOf(R"(double:"nan")"), HasSubstr(R"("NaN")"));
  EXPECT_THAT(refusalOf(R"({"a\u0000":1})"), HasSubstr("cannot contain a NUL"));
}

}  // namespace
}  // namespace hcy::test
