// SPDX-License-Identifier: Apache-2.0
//
// Cells and structs of a reply: elements are looked at when they are read, and the error names the
// place of one that did not arrive.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <hcy/hcyclient.hpp>
#include <string>
#include <vector>

#include "reply_arrays.h"

namespace hcyclient {
namespace {

using namespace hcyclient::test;
using ::testing::StartsWith;

// Throws for an element that is read, by any way to read it.
template <class Read>
void expectMissing(Read read, const std::string& place) {
  EXPECT_EQ(
      incompleteness(read),
      place +
          " did not arrive with the reply, or is of a class that the library does not support; "
          "the response size limit (Config::setResponseSizeLimit) may have cut the reply");
}

TEST(CppIncompleteCell, namesTheElementThatIsMissing) {
  Array cell = received(cellOf(3, {twos({1, 1}, 1)}));
  const Array& seen = cell;
  EXPECT_EQ(cell.size(), 3U);
  EXPECT_EQ(cell[0].scalar(), 2);
  EXPECT_EQ(seen[0].scalar(), 2);
  expectMissing([&] { cell[1].get(); }, "element 1");
  expectMissing([&] { cell[2].scalar(); }, "element 2");
  expectMissing([&] { seen[2]; }, "element 2");
  EXPECT_THROW(cell[3].get(), UsageError);
}

TEST(CppIncompleteCell, namesTheElementThatIsIncomplete) {
  Array cell = received(cellOf(2, {twos({1, 1}, 1), twos({2, 1}, 1)}));
  EXPECT_EQ(incompleteness([&] { static_cast<const Array&>(cell)[1]; }),
            "element 1 is incomplete: its dimensions require 2 elements, but fewer arrived; the "
            "response size limit (Config::setResponseSizeLimit) may have cut the reply");
  EXPECT_THROW(cell[1].toVector<double>(), IncompleteReply);
  cell[1] = 5.0;  // what is whole takes its place
  EXPECT_EQ(cell[1].scalar(), 5);
}

TEST(CppIncompleteCell, takesNothingWhereNothingArrived) {
  Array cell = received(cellOf(3, {twos({1, 1}, 1)}));
  expectMissing([&] { cell[1] = 4.0; }, "element 1");
  expectMissing([&] { cell[1].get(); }, "element 1");
  cell[0] = 4.0;
  EXPECT_EQ(cell[0].scalar(), 4);
  EXPECT_THROW((cell[3] = 4.0), UsageError);
}

TEST(CppIncompleteCell, keepsItsShape) {
  Array cell = received(cellOf(3, {twos({1, 1}, 1)}));
  expectMissing([&] { cell.resize({5, 1}); }, "element 2");
  EXPECT_EQ(cell.shape(), (Shape{3, 1}));
  Array whole = received(cellOf(1, {twos({1, 1}, 1)}));
  whole.resize({5, 1});
  EXPECT_EQ(whole[4].get().shape(), (Shape{0, 0}));
}

// Memory goes by what arrived, not by what the dimensions say.
TEST(CppIncompleteCell, ofTextsTakesNoMemoryForWhatIsMissing) {
  const std::string text = arrayOf(hcyCHAR_CLASS, {1, 1}, kChar, bytesField(1, "a"));
  const Array cell = received(cellOf(std::uint64_t{1} << 60U, {text}));
  expectMissing([&] { cell.toVector<std::string>(); }, "element 1");
}

// A class that the library does not serve: its element is not there, those around it are.
TEST(CppIncompleteCell, mayLackAnElementInItsMiddle) {
  const Array cell =
      received(cellOf(3, {twos({1, 1}, 1), arrayOf(17, {1, 1}, kDouble, ""), twos({1, 1}, 1)}));
  EXPECT_EQ(cell[2].scalar(), 2);
  expectMissing([&] { cell[1]; }, "element 1");
}

TEST(CppIncompleteStruct, namesTheFieldThatIsMissing) {
  Array s = received(structOf(2, {"a", "b"}, {twos({1, 1}, 1), twos({3, 1}, 1), twos({1, 1}, 1)}));
  const Array& seen = s;
  EXPECT_EQ(s("a").scalar(), 2);
  EXPECT_EQ(s(1, "a").scalar(), 2);
  expectMissing([&] { s(1, "b").get(); }, "field b of element 1");
  expectMissing([&] { seen(1, "b"); }, "field b of element 1");
  expectMissing([&] { s(1, "b") = 4.0; }, "field b of element 1");
  EXPECT_THAT(incompleteness([&] { seen("b"); }), StartsWith("field b of element 0 is incomplete"));
}

TEST(CppIncompleteStruct, keepsItsFields) {
  Array s = received(structOf(2, {"a", "b"}, {twos({1, 1}, 1), twos({1, 1}, 1), twos({1, 1}, 1)}));
  expectMissing([&] { s.addField("c"); }, "field b of element 1");
  expectMissing([&] { s.removeField("a"); }, "field b of element 1");
  expectMissing([&] { s.resize({3, 1}); }, "field b of element 1");
  EXPECT_EQ(s.fieldNames(), (std::vector<std::string>{"a", "b"}));
  Array whole = received(structOf(1, {"a", "b"}, {twos({1, 1}, 1), twos({1, 1}, 1)}));
  whole.addField("c");
  whole.removeField("a");
  whole.resize({2, 1});
  EXPECT_EQ(whole(0, "b").scalar(), 2);
  Array none = received(structOf(2, {}, {}));
  none.addField("a");
  none(1, "a") = 4.0;
  EXPECT_EQ(none(1, "a").scalar(), 4);
}

TEST(CppIncompleteContainers, nameTheWholePath) {
  const std::string inner = cellOf(3, {twos({1, 1}, 1), twos({2, 1}, 1)});
  Array s = received(structOf(1, {"list"}, {cellOf(1, {inner})}));
  expectMissing([&] { s("list")[0][2].get(); },
                "element 2 in element 0 in field list of element 0");
  EXPECT_THAT(incompleteness([&] { s("list")[0][1].get(); }),
              StartsWith("element 1 in element 0 in field list of element 0 is incomplete"));
  expectMissing([&] { s("list")[0][2] = 1.0; },
                "element 2 in element 0 in field list of element 0");
  s("list")[0][1] = 7.0;
  EXPECT_EQ(s("list")[0][1].scalar(), 7);
  EXPECT_EQ(s("list")[0][0].scalar(), 2);
}

}  // namespace
}  // namespace hcyclient
