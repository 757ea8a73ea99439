// SPDX-License-Identifier: Apache-2.0
//
// What arguments mean, and which are refused.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "argument_meaning.h"
#include "support/pki.h"

namespace hcy::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

TEST(Argument, plainJsonHasTheClassThatItLooksLike) {
  EXPECT_EQ(meaningOf("5"), "double 5");
  EXPECT_EQ(meaningOf("-0"), "double -0.0");
  EXPECT_EQ(meaningOf("1e-400"), "double 0");
  EXPECT_EQ(meaningOf("[1,2,3]"), "double [1,2,3]");
  EXPECT_EQ(meaningOf("[[1],[2]]"), "double [[1],[2]]");
  EXPECT_EQ(meaningOf("[[1,2],[3,4]]"), "double [[1,2],[3,4]]");
  EXPECT_EQ(meaningOf("[]"), "double []");
  EXPECT_EQ(meaningOf("[[],[]]"), R"(double {"$double":[],"$shape":[2,0]})");
  EXPECT_EQ(meaningOf("null"), "double []");
  EXPECT_EQ(meaningOf("true"), "logical true");
  EXPECT_EQ(meaningOf("[true,false]"), "logical [true,false]");
  EXPECT_EQ(meaningOf(R"("h\u00e9\u0000")"), R"(char "hé\u0000")");
  EXPECT_EQ(meaningOf(R"("")"), R"(char "")");
  EXPECT_EQ(meaningOf(" {} "), "struct {}");
  EXPECT_EQ(meaningOf(R"({"a":1,"int16":"x"})"), R"(struct {"a":1,"int16":"x"})");
  EXPECT_EQ(meaningOf(R"([{"a":1,"b":2},{"b":3,"a":4}])"),
            R"(struct [{"a":1,"b":2},{"a":4,"b":3}])");
}

TEST(Argument, theOutermostListCountsTheRows) {
  const auto arrays = tools::arraysFrom({"[[1,2,3],[4,5,6]]", "[[[1,2]],[[3,4]],[[5,6]]]"});
  EXPECT_EQ(arrays[0].shape(), (hcyclient::Shape{2, 3}));
  EXPECT_EQ(arrays[0].toVector<double>(), (std::vector<double>{1, 4, 2, 5, 3, 6}));
  EXPECT_EQ(arrays[1].shape(), (hcyclient::Shape{3, 1, 2}));
  EXPECT_EQ(arrays[1].toVector<double>(), (std::vector<double>{1, 3, 5, 2, 4, 6}));
}

TEST(Argument, whatIsMixedIsACell) {
  EXPECT_EQ(meaningOf(R"([1,"a"])"), R"(cell [1,"a"])");
  EXPECT_EQ(meaningOf(R"(["a","b"])"), R"(cell ["a","b"])");
  EXPECT_EQ(meaningOf("[1,true]"), "cell [1,true]");
  EXPECT_EQ(meaningOf("[1,[2,3]]"), "cell [1,[2,3]]");
  EXPECT_EQ(meaningOf("[null,null]"), R"(cell {"$cell":[[],[]]})");
  EXPECT_EQ(meaningOf("[[1,2],[true]]"), "cell [[1,2],true]");
  EXPECT_EQ(meaningOf(R"([{"a":1},{"b":2}])"), R"(cell {"$cell":[{"a":1},{"b":2}]})");
  EXPECT_EQ(meaningOf(R"([{"a":1},{"a":2,"b":3}])"), R"(cell {"$cell":[{"a":1},{"a":2,"b":3}]})");
  EXPECT_EQ(meaningOf(R"([{"a":2,"b":3},{"a":1}])"), R"(cell {"$cell":[{"a":2,"b":3},{"a":1}]})");
  EXPECT_EQ(meaningOf(R"([{"$int8":1},{"$int8":2}])"), R"(cell [{"$int8":1},{"$int8":2}])");
}

TEST(Argument, aClassBeforeItFixesTheClass) {
  EXPECT_EQ(meaningOf("int16:[1,2]"), R"(int16 {"$int16":[1,2]})");
  EXPECT_EQ(meaningOf("single:3"), R"(single {"$single":3})");
  EXPECT_EQ(meaningOf("single:16777217"), R"(single {"$single":16777216})");
  EXPECT_EQ(meaningOf("single:1e-60"), R"(single {"$single":0})");
  EXPECT_EQ(meaningOf("int8:1.5e1"), R"(int8 {"$int8":15})");
  EXPECT_EQ(meaningOf("uint8:-0"), R"(uint8 {"$uint8":0})");
  EXPECT_EQ(meaningOf("int64:-9223372036854775808"), R"(int64 {"$int64":-9223372036854775808})");
  EXPECT_EQ(meaningOf("uint64:18446744073709551615"), R"(uint64 {"$uint64":18446744073709551615})");
  EXPECT_EQ(meaningOf("logical:[1,0,true]"), "logical [true,false,true]");
  EXPECT_EQ(meaningOf("char:[104,105]"), R"(char "hi")");
  EXPECT_EQ(meaningOf("char:[55296]"), R"(char {"$char":55296})");
  EXPECT_EQ(meaningOf(R"(char:["ab","cd"])"), R"(char {"$char":["ab","cd"]})");
  EXPECT_EQ(meaningOf(R"({"$char":"","$shape":[2,0,3]})"), R"(char {"$char":"","$shape":[2,0,3]})");
  EXPECT_EQ(meaningOf(R"({"$char":"abc","$shape":[3,1]})"), R"(char {"$char":["a","b","c"]})");
  EXPECT_EQ(meaningOf("cell:[1,2]"), R"(cell {"$cell":[1,2]})");
  EXPECT_EQ(meaningOf(R"(struct:[{"$a":1}])"), R"(struct {"$struct":[{"$a":1}]})");
  EXPECT_EQ(meaningOf(R"(double:["NaN","-Infinity",1])"),
            R"(double {"$double":["NaN","-Infinity",1]})");
  EXPECT_EQ(meaningOf(R"({"$double":[],"$shape":[0,3]})"),
            R"(double {"$double":[],"$shape":[0,3]})");
  EXPECT_EQ(meaningOf("[{},{}]"), R"(struct {"$struct":[],"$fields":[],"$shape":[1,2]})");
  EXPECT_EQ(meaningOf(R"({"$struct":[],"$fields":[],"$shape":[1000000000,2]})"),
            R"(struct {"$struct":[],"$fields":[],"$shape":[1000000000,2]})");
  EXPECT_EQ(meaningOf(R"({"$struct":[],"$shape":[0,1],"$fields":["x","y"]})"),
            R"(struct {"$struct":[],"$fields":["x","y"],"$shape":[0,1]})");
}

TEST(Argument, complexAndSparse) {
  EXPECT_EQ(meaningOf(R"(complex:{"re":[1,2],"im":[3,"NaN"]})"),
            R"(double {"$complex":{"re":[1,2],"im":[3,"NaN"]}})");
  EXPECT_EQ(meaningOf(R"(single:complex:{"re":1,"im":2})"),
            R"(single {"$single":{"$complex":{"re":1,"im":2}}})");
  EXPECT_EQ(meaningOf(R"(sparse:{"rows":3,"cols":2,"entries":[[2,1,5],[0,0,1]]})"),
            R"(double {"$sparse":{"rows":3,"cols":2,"entries":[[0,0,1],[2,1,5]]}})");
  EXPECT_EQ(meaningOf(R"(sparse:{"rows":3,"cols":2,"entries":[[2,1,5,-1]]})"),
            R"(double {"$sparse":{"rows":3,"cols":2,"entries":[[2,1,5,-1]]}})");
  EXPECT_EQ(meaningOf(R"(sparse:{"rows":3,"cols":2,"entries":[[2,1,true]]})"),
            R"(logical {"$sparse":{"rows":3,"cols":2,"entries":[[2,1,true]]}})");
  EXPECT_EQ(meaningOf(R"(logical:sparse:{"rows":3,"cols":2,"entries":[]})"),
            R"(logical {"$logical":{"$sparse":{"rows":3,"cols":2,"entries":[]}}})");
}

TEST(Argument, filesOfJsonAndOfCommaSeparatedValues) {
  const TestDirectory directory;
  EXPECT_EQ(meaningOf("@" + directory.write("a.json", "[1,\n2]\n")), "double [1,2]");
  EXPECT_EQ(meaningOf("int8:@" + directory.write("b.json", "[1,2]")), R"(int8 {"$int8":[1,2]})");
  EXPECT_EQ(meaningOf("@" + directory.write("c.csv", "1,2\n3,4\n")), "double [[1,2],[3,4]]");
  EXPECT_EQ(meaningOf("single:@" + directory.write("d.CSV", "x\n1\n")), R"(single {"$single":1})");
  EXPECT_EQ(meaningOf("@" + directory.write("e.csv", "a,1\n")), R"(cell ["a",1])");
  EXPECT_EQ(meaningOf("@" + directory.write("h.csv", "1e-400,-1e-400\n")), "double [0,-0.0]");
  EXPECT_THAT(refusalOf("@" + directory.write("i.csv", "1\n1e999\n")),
              HasSubstr("line 2, column 1: the number is too large for a double"));
  EXPECT_EQ(meaningOf("@" + directory.write("j.json", "\xEF\xBB\xBF[1,2]")), "double [1,2]");
  EXPECT_EQ(refusalOf("@" + directory.file("none")),
            directory.file("none") + ": No such file or directory");
  EXPECT_EQ(refusalOf("@" + directory.path()), directory.path() + ": Is a directory");
  EXPECT_EQ(refusalOf("@" + directory.write("f.json", "[1,\n 2 3]")),
            directory.file("f.json") +
                ", line 2, column 4: bad JSON: unexpected number literal; expected ']'\n"
                "   2 3]\n"
                "     ^");
  EXPECT_EQ(
      refusalOf("int8:@" + directory.write("g.csv", "1,2\n3,x\n")),
      directory.file("g.csv") +
          ", line 1, column 1: only a table of numbers can have a class, and this one contains "
          "text\n"
          "  1,2\n  ^");
}

TEST(Argument, badJsonSaysWhere) {
  EXPECT_EQ(refusalOf("[1,2"),
            "argument 1, line 1, column 5: bad JSON: unexpected end of input; expected ']'\n"
            "  [1,2\n"
            "      ^");
  EXPECT_THAT(refusalOf("[1 2]"), HasSubstr("column 4: "));
  EXPECT_THAT(refusalOf(R"(["é" "b"])"), HasSubstr("column 6: "));
  EXPECT_THAT(refusalOf(R"(["x" "p\"q\\"])"), HasSubstr("column 6: "));
  EXPECT_THAT(refusalOf("int8:[1,200]"),
              StartsWith("argument 1, line 1, column 9: the number must be between -128 and 127\n"
                         "  int8:[1,200]\n"
                         "          ^"));
  EXPECT_THAT(refusalOf("int8:[1,false]"), HasSubstr("column 9: expected a number"));
  EXPECT_THAT(refusalOf("hello"), HasSubstr("(for text, write '\"hello\"' or text:hello)"));
  EXPECT_EQ(refusalOf("@"),
            "argument 1, line 1, column 2: a file name must follow @\n"
            "  @\n"
            "   ^");
  EXPECT_THAT(refusalOf("foo:1"), HasSubstr("column 1: there is no class foo"));
  EXPECT_THAT(refusalOf(R"({"a":1,"b":2,"a":3})"),
              HasSubstr("column 14: this object has the name a twice"));
  EXPECT_THAT(refusalOf("[[1,2],[3]]"),
              HasSubstr("column 8: this list has 1 element, but the lists before it have 2"));
  EXPECT_THAT(refusalOf("[[1],[[2]]]"), HasSubstr("column 7: expected a single value, like"));
  EXPECT_THAT(refusalOf(""), HasSubstr("unexpected end of input"));
  EXPECT_THAT(refusalOf("@" + TestDirectory().write("a.json", std::string("1\0", 2))),
              HasSubstr("column 2: bad JSON: NUL"));
  EXPECT_THAT(refusalOf(std::string("[1,\xFF]")), HasSubstr("column 4: bad JSON"));
}

TEST(Argument, aCommaBeforeABracketIsTheWrongThing) {
  const TestDirectory directory;
  EXPECT_EQ(refusalOf("@" + directory.write("a.json", "{\"a\": 1,\n \"b\": 2,\n}\n")),
            directory.file("a.json") +
                ", line 2, column 8: bad JSON: trailing comma before '}'\n"
                "   \"b\": 2,\n"
                "         ^");
  EXPECT_THAT(refusalOf(R"({"a":1,})"), HasSubstr("column 7: bad JSON: trailing comma before '}'"));
  EXPECT_THAT(refusalOf(R"({"a":"x" , })"),
              HasSubstr("column 10: bad JSON: trailing comma before '}'"));
  EXPECT_THAT(refusalOf("[1,\n]"),
              HasSubstr("line 1, column 3: bad JSON: trailing comma before ']'"));
  EXPECT_THAT(refusalOf("[[1,],2]"), HasSubstr("column 4: bad JSON: trailing comma before ']'"));
  EXPECT_THAT(refusalOf("{,}"), HasSubstr("column 2: bad JSON: unexpected ','"));
  EXPECT_THAT(refusalOf("{}}"), HasSubstr("column 3: bad JSON: unexpected '}'"));
  // Where a name is expected, the place is that of what is there.
  EXPECT_THAT(refusalOf(R"({"a":1,[2]})"), HasSubstr("column 8: bad JSON: unexpected '['"));
}

TEST(Argument, aFileNameWithoutAnAtSignIsNoTable) {
  const TestDirectory directory;
  const std::string file = directory.write("tt.dat", "1,2\n");
  EXPECT_THAT(refusalOf("csv:" + file), HasSubstr("there is a file of this name; to read it, "
                                                  "write csv:@" +
                                                  file + "\n"));
  EXPECT_THAT(refusalOf("int8:tsv:" + file), HasSubstr("write tsv:@" + file + "\n"));
  EXPECT_EQ(meaningOf("csv:1,2"), "double [1,2]");
  EXPECT_EQ(meaningOf("csv:\"" + file + "\""), "cell [\"" + file + "\"]");
  EXPECT_EQ(meaningOf("text:" + file), "char \"" + file + "\"");
}

TEST(Argument, ofALongLineThePlaceAndWhatIsAroundItIsShown) {
  const std::string before = "[\"" + std::string(50, 'a') + "\",";
  EXPECT_EQ(refusalOf(before + "x," + std::string(50, '1') + "]"),
            "argument 1, line 1, column 55: bad JSON: invalid literal\n"
            "  …" +
                std::string(34, 'a') + "\",x," + std::string(34, '1') + "…\n" +
                std::string(39, ' ') + "^");
  // Not cut inside a character, and as many columns to the mark as a terminal needs.
  std::string wide;
  for (int i = 0; i < 20; ++i) wide += "é";
  EXPECT_EQ(refusalOf("[\"" + wide + "\", x" + wide + "]"),
            "argument 1, line 1, column 26: bad JSON: invalid literal\n"
            "  …" +
                wide.substr(0, 32) + "\", x" + wide.substr(0, 36) + "…\n" + std::string(22, ' ') +
                "^");
  EXPECT_THAT(refusalOf("[\"中\",x]"), HasSubstr("\n  [\"中\",x]\n        ^"));
}

TEST(Argument, typedValuesThatContradictThemselvesAreRefused) {
  EXPECT_THAT(refusalOf(R"({"$int8":1,"b":2})"), HasSubstr("cannot have other members"));
  EXPECT_THAT(refusalOf(R"({"$int7":1})"), HasSubstr("there is no class int7"));
  EXPECT_THAT(refusalOf(R"({"$int8":1,"$int16":1})"), HasSubstr("cannot have two classes"));
  EXPECT_THAT(refusalOf(R"({"$shape":[1,1]})"), HasSubstr("need a class"));
  EXPECT_THAT(refusalOf(R"({"$int8":[1],"$fields":[]})"),
              HasSubstr("only a struct can have $fields"));
  EXPECT_THAT(refusalOf(R"({"$int8":[1,2],"$shape":[1,3]})"),
              HasSubstr("the shape needs 3 elements, but there are 2"));
  EXPECT_THAT(refusalOf(R"({"$int8":[],"$shape":[2147483647,2147483647]})"),
              HasSubstr("more elements"));
  EXPECT_THAT(refusalOf(R"({"$int8":[],"$shape":[3]})"), HasSubstr("at least two dimensions"));
  EXPECT_THAT(refusalOf(R"(complex:{"re":[1,2],"im":[1]})"), HasSubstr("the same shape"));
  EXPECT_THAT(refusalOf(R"(complex:{"re":[1,2],"im":[[1],[2]]})"), HasSubstr("the same shape"));
  EXPECT_THAT(refusalOf(R"(complex:{"re":1})"), HasSubstr("a complex value must have the form {"));
  EXPECT_THAT(refusalOf(R"(logical:complex:{"re":1,"im":1})"), HasSubstr("only numbers"));
  EXPECT_THAT(refusalOf(R"(int8:{"$int8":1})"), HasSubstr("only complex and sparse can follow"));
  EXPECT_THAT(refusalOf(R"(int8:sparse:{"rows":1,"cols":1,"entries":[]})"), HasSubstr("sparse"));
  EXPECT_THAT(refusalOf(R"(sparse:{"rows":1,"cols":1})"),
              HasSubstr("a sparse value must have the form {"));
  EXPECT_THAT(refusalOf(R"(sparse:{"rows":1,"cols":1,"entries":[[1,0,1]]})"),
              HasSubstr("numbered from 0"));
  EXPECT_THAT(refusalOf(R"(sparse:{"rows":1,"cols":1,"entries":[[0,0,1],[0,0,2]]})"),
              HasSubstr("two entries have the same row and column"));
  EXPECT_THAT(refusalOf(R"(struct:[{"a":1},{"b":1}])"), HasSubstr("the same fields"));
  EXPECT_THAT(refusalOf(R"({"$struct":[],"$fields":["a","a"]})"),
              HasSubstr("$fields has the name a twice"));
  EXPECT_THAT(refusalOf(R"(char:["ab","c"])"),
              HasSubstr("column 12: all rows of a char matrix must have the same length"));
}

TEST(Argument, partsOfTypedValuesThatAreNotWhatTheyShouldBeAreRefused) {
  EXPECT_THAT(refusalOf(R"({"$int8":1,"$shape":[1,1]})"),
              HasSubstr("with $shape, the data must be a single list"));
  EXPECT_THAT(
      refusalOf(R"({"$single":{"$complex":{"re":1,"im":1},"$shape":[1,1]},"$shape":[1,1]})"),
      HasSubstr("$shape is given twice"));
  EXPECT_THAT(refusalOf(R"({"$sparse":{"rows":1,"cols":1,"entries":[]},"$shape":[1,1]})"),
              HasSubstr("has its shape in rows and cols"));
  EXPECT_THAT(refusalOf(R"(sparse:{"rows":1,"cols":1,"entries":[[0,1,1]]})"),
              HasSubstr("numbered from 0"));
  EXPECT_THAT(refusalOf(R"(sparse:{"rows":1,"cols":1,"entries":[[0,0]]})"),
              HasSubstr("a sparse entry must be"));
  EXPECT_THAT(refusalOf(R"(sparse:{"rows":1,"cols":1,"entries":[1]})"),
              HasSubstr("a sparse entry must be"));
  EXPECT_THAT(refusalOf(R"(int8:single:complex:{"re":1,"im":1})"),
              HasSubstr("column 13: too many classes"));
  EXPECT_THAT(refusalOf("cell:1"), HasSubstr("a cell must be a list"));
  EXPECT_THAT(refusalOf("struct:1"), HasSubstr("a struct must be a list of objects"));
  EXPECT_THAT(refusalOf("struct:[1]"), HasSubstr("an element of a struct must be an object"));
  EXPECT_THAT(refusalOf(R"({"$struct":[],"$fields":"a"})"), HasSubstr("a list of field names"));
  EXPECT_THAT(refusalOf(R"({"$struct":[],"$fields":[1]})"),
              HasSubstr("a field name must be a string"));
  EXPECT_THAT(refusalOf(R"({"$struct":[],"$fields":["\u0000"]})"),
              HasSubstr("cannot contain a NUL"));
}

TEST(Argument, textNeedsNoQuotes) {
  const TestDirectory files;
  const std::string file = files.write("notes.txt", "two\nlines, \"é\"\n");
  EXPECT_EQ(meaningOf("text:hello"), R"(char "hello")");
  EXPECT_EQ(meaningOf("text:int8:[1"), R"(char "int8:[1")");
  EXPECT_EQ(meaningOf("text:"), R"(char "")");
  EXPECT_EQ(meaningOf("text:@" + file), R"(char "two\nlines, \"é\"\n")");
  EXPECT_THAT(refusalOf("text:a\xFF"), StartsWith("argument 1, line 1, column 7: the text is not"));
  EXPECT_THAT(refusalOf("int8:text:a"), HasSubstr("text: cannot have a class before it"));
}

TEST(Argument, aNotationBeforeAFileIsStrongerThanItsEnding) {
  const TestDirectory files;
  const std::string table = files.write("table.dat", "x\ty\n1\t2\n");
  EXPECT_EQ(meaningOf("tsv:@" + table), "double [1,2]");
  EXPECT_EQ(meaningOf("@" + files.write("a.TSV", "1\t2\n")), "double [1,2]");
  EXPECT_EQ(meaningOf("json:@" + files.write("b.csv", "[3]")), "double 3");
  EXPECT_EQ(meaningOf("csv:1,2"), "double [1,2]");
  EXPECT_EQ(meaningOf("int8:csv:1,2"), R"(int8 {"$int8":[1,2]})");
  EXPECT_EQ(tools::toJson(tools::arraysFrom({"csv:1;2"}, {';'})[0]), "[1,2]");
  EXPECT_THAT(refusalOf("@" + table), HasSubstr("(for text, write text:@" +
                                                files.file("table.dat") + "; for a table, csv:@"));
  EXPECT_THAT(refusalOf("npy:[1]"), HasSubstr("npy: must be followed by @FILE or -"));
  EXPECT_THAT(refusalOf("npy:@" + table), HasSubstr("table.dat: this is not a .npy file"));
}

TEST(Argument, columnsOfATable) {
  const TestDirectory files;
  const std::string table = "@" + files.write("t.csv", "x,\"a, b\"\n1,2\n3,4\n");
  EXPECT_EQ(meaningOf(table + "[x]"), "double [[1],[3]]");
  EXPECT_EQ(meaningOf("single:" + table + R"(["a, b",0])"), R"(single {"$single":[[2,1],[4,3]]})");
  const auto arrays = tools::arraysFrom({table + "[0;1,x]", "5"});
  ASSERT_EQ(arrays.size(), 3U);
  EXPECT_EQ(tools::toJson(arrays[0]), "[[1],[3]]");
  EXPECT_EQ(tools::toJson(arrays[1]), "[[2,1],[4,3]]");
  EXPECT_THAT(refusalOf(table + "[y]"),
              HasSubstr("t.csv, line 1, column 1: there is no column named y"));
  EXPECT_THAT(refusalOf(table + "[]"), HasSubstr("a column name is missing"));
  EXPECT_THAT(refusalOf(table + "[x;]"), HasSubstr("a column name is missing"));
  EXPECT_THAT(refusalOf(table + "[\"x]"), HasSubstr("the closing quote is missing"));
  EXPECT_THAT(refusalOf(table + "[\"x\"y]"),
              HasSubstr("expected a comma, a semicolon or the closing bracket"));
}

TEST(Argument, classesHaveTheirNumpyNamesToo) {
  EXPECT_EQ(meaningOf("float64:9007199254740993"), "double 9007199254740992");
  EXPECT_EQ(meaningOf("float32:[1]"), R"(single {"$single":1})");
  EXPECT_EQ(meaningOf("bool:[1,0]"), "logical [true,false]");
  EXPECT_EQ(meaningOf(R"(complex64:{"re":1,"im":[2]})"),
            R"(single {"$single":{"$complex":{"re":1,"im":2}}})");
  EXPECT_EQ(meaningOf(R"(complex128:{"re":9007199254740993,"im":0})"),
            R"(double {"$complex":{"re":9007199254740992,"im":0}})");
  EXPECT_THAT(refusalOf(R"(int8:complex64:{"re":1,"im":2})"),
              HasSubstr("column 6: too many classes"));
  EXPECT_THAT(refusalOf("flaot32:1"),
              AllOf(HasSubstr("there is no class flaot32; did you mean float32?\n"),
                    HasSubstr("\n  classes: uint8 int8 "), HasSubstr("\n  notations: json text ")));
  EXPECT_THAT(refusalOf("tex:1"), HasSubstr("did you mean text?"));
  EXPECT_THAT(refusalOf("http:1"), HasSubstr("no class http\n  http:1\n"));
}

TEST(Argument, aTildeIsTheHomeDirectory) {
  const TestDirectory files;
  files.write("here.json", "7");
  const std::string before = std::getenv("HOME") == nullptr ? "" : std::getenv("HOME");
  ::setenv("HOME", files.path().c_str(), 1);
  EXPECT_EQ(meaningOf("@~/here.json"), "double 7");
  ::setenv("HOME", before.c_str(), 1);
}

TEST(Argument, quotesThatTheShellTookAreMentioned) {
  EXPECT_THAT(refusalOf("{a:1}"), HasSubstr("(write the argument in single quotes"));
  EXPECT_THAT(refusalOf("[abc]"), HasSubstr("(write the argument in single quotes"));
  EXPECT_THAT(refusalOf("[1,]"), testing::Not(HasSubstr("single quotes")));
}

}  // namespace
}  // namespace hcy::test
