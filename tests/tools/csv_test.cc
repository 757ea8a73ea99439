// SPDX-License-Identifier: Apache-2.0

#include "notations/csv.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "notations/array_json.h"
#include "notations/json_array.h"
#include "text/source_text.h"

namespace hcy::test {
namespace {

std::string meaningOf(const tools::CsvTable& table) {
  if (!table.isOfNumbers) return tools::toJson(tools::cellOf(table));
  std::string text;
  for (std::size_t i = 0; i < table.rows(); ++i) {
    for (std::size_t j = 0; j < table.columns; ++j) {
      const std::string digits(table.number(i, j).value_or("none"));
      text += (digits.empty() ? "NaN" : digits) + " ";
    }
    text += "| ";
  }
  return text;
}

std::string meaningOf(const std::string& csv, char delimiter = ',') {
  return meaningOf(tools::tableFrom(csv, delimiter));
}

std::string choiceOf(const std::string& csv, const std::vector<tools::CsvColumns>& choices) {
  try {
    std::string text;
    for (const auto& table : tools::tablesFrom(csv, ',', choices)) text += meaningOf(table) + "; ";
    return text;
  } catch (const tools::BadText& problem) {
    return std::to_string(problem.offset) + " " + problem.what();
  }
}

std::string refusalOf(const std::string& csv) {
  try {
    return meaningOf(csv);
  } catch (const tools::BadText& problem) {
    return std::to_string(problem.offset) + " " + problem.what();
  }
}

TEST(Csv, numbers) {
  EXPECT_EQ(meaningOf("1,2\n3,4\n"), "1 2 | 3 4 | ");
  EXPECT_EQ(meaningOf("1, -2.5e3 \r\n+3,NaN"), "1 -2.5e3 | 3 NaN | ");
  EXPECT_EQ(meaningOf("1,\n,2\n"), "1 NaN | NaN 2 | ");
  EXPECT_EQ(meaningOf("1,NA\n NA ,2\n"), "1 NaN | NaN 2 | ");
  EXPECT_EQ(meaningOf(""), "");
}

TEST(Csv, anotherCharacterSeparates) {
  EXPECT_EQ(meaningOf("1;2\n3;4\n", ';'), "1 2 | 3 4 | ");
  EXPECT_EQ(meaningOf("a,b\t\"c\td\"\n", '\t'), R"(["a,b","c\td"])");
  EXPECT_EQ(meaningOf("x\ty\n1\t\n", '\t'), "1 NaN | ");
}

TEST(Csv, columnsAreChosenByNameOrNumber) {
  const std::string csv = "id,x,y\na,1,2\nb,3,NA\n";
  EXPECT_EQ(choiceOf(csv, {{{"x"}, {"y"}}}), "1 2 | 3 NaN | ; ");
  EXPECT_EQ(choiceOf(csv, {{{"y"}}, {{"id"}}}),
            R"(2 | NaN | ; {"$cell":["a","b"],"$shape":[2,1]}; )");
  EXPECT_EQ(choiceOf(csv, {{{"", 2}, {"", 1}}}), "2 1 | NaN 3 | ; ");
  EXPECT_EQ(choiceOf("1,2\n3,4\n", {{{"", 1}}}), "2 | 4 | ; ");
  // A name that is a number, and a first line that only a name tells to be a header.
  EXPECT_EQ(choiceOf("x,2025\n1,2\n", {{{"2025"}}}), "2 | ; ");
  EXPECT_EQ(choiceOf("x\na\n", {{{"x"}}}), R"(["a"]; )");
  EXPECT_EQ(choiceOf(csv, {{{"z"}}}), "0 there is no column named z");
  EXPECT_EQ(choiceOf(csv, {{{"", 3}}}),
            "0 there is no column 3; the columns are numbered from 0 to 2");
  EXPECT_EQ(choiceOf("x,x\n1,2\n", {{{"x"}}}),
            "0 two columns are named x; choose one of them by its number");
  EXPECT_EQ(choiceOf("", {{{"x"}}}), "0 the table is empty: there are no columns to choose from");
}

TEST(Csv, allChoicesAgreeAboutTheHeader) {
  const std::string csv = "name,x,2025\na,1,2\nb,3,\n";
  const std::string names = R"({"$cell":["a","b"],"$shape":[2,1]}; )";
  EXPECT_EQ(choiceOf(csv, {{{"", 0}}, {{"x"}}}), names + "1 | 3 | ; ");
  EXPECT_EQ(choiceOf(csv, {{{"", 0}}, {{"", 1}}}), names + "1 | 3 | ; ");
  EXPECT_EQ(choiceOf(csv, {{{"", 2}}}), "2 | NaN | ; ");
  EXPECT_EQ(choiceOf(csv, {{{"", 0}}}), names);
  // No text stands above numbers.
  EXPECT_EQ(choiceOf("a,1\nb,2\n", {{{"", 1}}}), "1 | 2 | ; ");
  EXPECT_EQ(choiceOf("a,b\nc,\n", {{{"", 0}}}), R"({"$cell":["a","c"],"$shape":[2,1]}; )");
}

TEST(Csv, aSimilarNameIsSuggested) {
  EXPECT_EQ(choiceOf("id,weight\na,1\n", {{{"wieght"}}}),
            "0 there is no column named wieght; did you mean weight?");
}

TEST(Csv, aHeaderAndCommentsAreLeftOut) {
  EXPECT_EQ(meaningOf("\xEF\xBB\xBFx,y\n1,2\n"), "1 2 | ");
  EXPECT_EQ(meaningOf("# note, with a comma\n\"x\",\"1\"\n\n1,2\n \t\r\n"), "1 2 | ");
  EXPECT_EQ(meaningOf(",x\n1,2\n"), "1 2 | ");
  EXPECT_EQ(meaningOf(",\n1,2\n"), "NaN NaN | 1 2 | ");
  EXPECT_EQ(meaningOf("1e999\n1\n"), "1e999 | 1 | ");
  EXPECT_EQ(meaningOf("x,y\n"), R"(["x","y"])");
  EXPECT_EQ(meaningOf("x,1\n1,2\n"), R"({"$cell":["x",1,1,2],"$shape":[2,2]})");
}

TEST(Csv, textsAndNumbersMakeACell) {
  EXPECT_EQ(meaningOf("name,size\nbox,2\n\"a \"\"b\"\",\nc\",\n"),
            R"({"$cell":["name","box","a \"b\",\nc","size",2,""],"$shape":[3,2]})");
  EXPECT_EQ(meaningOf("\"1\",2\n3,4\n"), R"({"$cell":["1",3,2,4],"$shape":[2,2]})");
  EXPECT_EQ(meaningOf("a,1e999\n"), R"(["a","1e999"])");
  EXPECT_EQ(meaningOf("+-3,++3\n"), R"(["+-3","++3"])");
}

TEST(Csv, badTablesAreRefused) {
  EXPECT_EQ(refusalOf("1,2\n3\n"), "4 this line has 1 field, but the first line has 2");
  EXPECT_EQ(refusalOf("1\n2,3\n"), "2 this line has 2 fields, but the first line has 1");
  EXPECT_EQ(refusalOf("1,\"2\n3\n"), "2 the closing quote is missing");
  EXPECT_EQ(refusalOf("\"1\"2\n"),
            "3 expected a comma or the end of the line after the closing quote");
  EXPECT_EQ(refusalOf("a\rb\n"),
            "1 this carriage return is not followed by a line feed; put a field that contains one "
            "in double quotes");
  EXPECT_EQ(refusalOf("a,\xFF\n"), "2 the field is not valid UTF-8");
}

}  // namespace
}  // namespace hcy::test
