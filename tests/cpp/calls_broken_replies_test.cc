// SPDX-License-Identifier: Apache-2.0
//
// Arrays that hold less than their dimensions say are not read beyond their storage.

#include <gtest/gtest.h>

#include <hcy/hcyclient.hpp>
#include <string>
#include <vector>

#include "support/script_server.h"
#include "support/wire_bytes.h"

namespace hcyclient {
namespace {

using hcy::test::bytesField;
using hcy::test::numberField;
using hcy::test::varint;

// The numbers of the typed part of an array's message.
constexpr unsigned kInt16 = 19, kDouble = 25, kChar = 27, kCell = 28, kStruct = 29, kSparse = 30;

std::string arrayOf(hcyClassID type, const std::vector<unsigned>& shape, unsigned part,
                    const std::string& contents) {
  std::string dimensions;
  for (const unsigned dimension : shape) dimensions += varint(dimension);
  return numberField(1, static_cast<std::uint64_t>(type)) + bytesField(2, dimensions) +
         bytesField(part, contents);
}

// What a call gives when the server answers with this array.
Array received(const std::string& array) {
  const hcy::test::ScriptServer server({hcy::test::Connection{
      hcy::test::replyToEach(hcy::test::httpReply(200, "OK", hcy::test::resultOf({array})))}});
  const Library library;
  Context context{Config(library)};
  return std::move(context.feval(server.url()).at(0));
}

const std::string kTwo = std::string("\0\0\0\0\0\0\0\x40", 8);

TEST(CppBrokenReply, showsZerosForNumbersThatDidNotCome) {
  Array array = received(arrayOf(hcyDOUBLE_CLASS, {2, 3}, kDouble, bytesField(1, kTwo)));
  EXPECT_EQ(array.toVector<double>(), (std::vector<double>{2, 0, 0, 0, 0, 0}));
  const Array narrow = received(arrayOf(hcyINT16_CLASS, {2, 1}, kInt16, bytesField(1, "\x05")));
  EXPECT_EQ(narrow.toVector<std::int16_t>(), (std::vector<std::int16_t>{5, 0}));
  const Array text = received(arrayOf(hcyCHAR_CLASS, {1, 3}, kChar, bytesField(1, "a")));
  EXPECT_EQ(text.toString(), std::string("a\0\0", 3));
}

TEST(CppBrokenReply, showsAsManyImaginaryPartsAsRealOnes) {
  Array array = received(
      arrayOf(hcyDOUBLE_CLASS, {2, 1}, kDouble, bytesField(1, kTwo) + bytesField(2, kTwo)));
  EXPECT_EQ(array.toVector<std::complex<double>>(),
            (std::vector<std::complex<double>>{{2, 2}, {0, 0}}));
}

TEST(CppBrokenReply, lacksElementsThatCanBeStored) {
  Array cell = received(arrayOf(hcyCELL_CLASS, {3, 1}, kCell, ""));
  EXPECT_THROW(cell[1].get(), UsageError);
  cell[1] = 4.0;
  EXPECT_EQ(cell[1].scalar(), 4);
  EXPECT_THROW(cell[3].get(), UsageError);

  Array s = received(arrayOf(hcySTRUCT_CLASS, {2, 1}, kStruct, bytesField(1, "a")));
  EXPECT_THROW(s(1, "a").get(), UsageError);
  s(1, "a") = 4.0;
  EXPECT_EQ(s(1, "a").scalar(), 4);
}

// Rows 0 and 5, in storage for as many values as are given.
Array receivedSparse(const std::vector<unsigned>& shape, const std::string& starts,
                     const std::string& values) {
  return received(arrayOf(14, shape, kSparse,
                          bytesField(2, std::string("\0\5", 2)) + bytesField(3, starts) +
                              bytesField(16, bytesField(1, values))));
}

TEST(CppBrokenReply, hasSparseListsOfOneLength) {
  const Array array = receivedSparse({6, 2}, std::string("\0\2", 2), kTwo);
  EXPECT_EQ(array.toVector<double>(), (std::vector<double>{2, 0}));
  EXPECT_EQ(array.rowIndices().size(), 2U);
  ASSERT_EQ(array.columnStarts().size(), 3U);
  EXPECT_EQ(array.columnStarts()[2], 0U);
  EXPECT_THROW(array.entries<double>(), UsageError);
  EXPECT_THROW(receivedSparse({6, 1}, std::string("\0\3", 2), kTwo).entries<double>(), UsageError);
  EXPECT_THROW(receivedSparse({5, 1}, std::string("\0\2", 2), kTwo).entries<double>(), UsageError);
  EXPECT_EQ(receivedSparse({6, 1}, std::string("\0\2", 2), kTwo).entries<double>().size(), 2U);
  const Array full = receivedSparse({1, 1}, std::string("\0\1", 2), kTwo);
  EXPECT_EQ(full.rowIndices().size(), 1U);
  EXPECT_EQ(full.toVector<double>(), (std::vector<double>{2}));
  const Array flat = receivedSparse({0, 5}, "", "");
  EXPECT_EQ(flat.columnStarts().size(), 6U);
  const Array shapeless = receivedSparse({}, "", "");
  EXPECT_TRUE(shapeless.columnStarts().empty());
}

}  // namespace
}  // namespace hcyclient
