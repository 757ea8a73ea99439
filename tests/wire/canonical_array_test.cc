// SPDX-License-Identifier: Apache-2.0
//
// What can be kept as it is: only what the message library would write.

#include "wire/canonical_array.h"

#include <gtest/gtest.h>

#include <string>

#include "support/array_messages.h"
#include "support/wire_bytes.h"

namespace hcy {
namespace {

bool isCanonicalText(const std::string& bytes) {
  return isCanonical({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}, 9);
}

std::string part(int number, const std::string& content) {
  return test::bytesField(static_cast<unsigned>(number), content);
}

std::string packed(const std::string& varints) { return part(1, varints); }

TEST(CanonicalArray, IsWhatTheMessageLibraryWrites) {
  VORTEN_Array array = test::complexRowOf<INT16_class>({-1, 300}, {5, 6});
  array.set_arrayid(1U << 30);
  array.set_dataframe(7);
  EXPECT_TRUE(isCanonicalText(array.SerializeAsString()));
}

TEST(CanonicalArray, HasNumbersInTheirRange) {
  const int int16 = VORTEN_Array::kInt16FieldNumber;
  const std::string beyond = "\x80\x80\x80\x80\x08";                     // 2 to the 31st
  const std::string below = "\xFF\xFF\xFF\xFF\xF7\xFF\xFF\xFF\xFF\x01";  // less than -2 to the 31st
  EXPECT_TRUE(isCanonicalText(part(int16, packed("\x05"))));
  EXPECT_FALSE(isCanonicalText(part(int16, packed(beyond))));
  EXPECT_FALSE(isCanonicalText(part(int16, packed(below))));
}

TEST(CanonicalArray, HasVarintsOfTheShortestForm) {
  EXPECT_TRUE(isCanonicalText("\x18\x01\x20\x01"));
  EXPECT_FALSE(isCanonicalText(std::string("\x18\x81\x00\x20\x01", 5)));
  EXPECT_FALSE(isCanonicalText(std::string("\x18\x01\x20\x81\x00", 5)));
}

TEST(CanonicalArray, EndsItsSparsePartWithTheValues) {
  const std::string values = part(VORTEN_Array::Sparse::kQxsparsesingleFieldNumber, "");
  const int sparse = VORTEN_Array::kSparseFieldNumber;
  EXPECT_TRUE(isCanonicalText(part(sparse, values)));
  EXPECT_FALSE(isCanonicalText(part(sparse, values + values)));
  EXPECT_FALSE(isCanonicalText(
      part(sparse, part(VORTEN_Array::Sparse::kQxsparsesingleFieldNumber, packed("abc")))));
}

}  // namespace
}  // namespace hcy
