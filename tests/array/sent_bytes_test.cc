// SPDX-License-Identifier: Apache-2.0
//
// The bytes that arrays are sent as.

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "support/wrapped_arrays.h"

namespace hcy {
namespace {

using test::owned;

// The bytes of a committed array in hexadecimal.
std::string sent(const ArrayHandle& array) {
  std::string text;
  for (const char byte : test::committed(array).SerializeAsString()) {
    char digits[4];
    std::snprintf(digits, sizeof digits, "%02X ", static_cast<unsigned char>(byte));
    text += digits;
  }
  if (!text.empty()) text.pop_back();
  return text;
}

template <class Element>
Element* data(const ArrayHandle& array) {
  return static_cast<Element*>(hcyGetData(array.get()));
}

// type, and the packed dimensions 1 and 1
#define SCALAR_OF(type) "08 " type " 12 02 01 01 "

TEST(SentInt16, TakesTenBytesWhenNegative) {
  const auto array = owned(hcyCreateNumericMatrix(1, 1, hcyINT16_CLASS, hcyREAL));
  *data<std::int16_t>(array) = -1;
  EXPECT_EQ(sent(array), SCALAR_OF("03") "9A 01 0C 0A 0A FF FF FF FF FF FF FF FF FF 01");
  VORTEN_Array parsed;
  ASSERT_TRUE(parsed.ParseFromString(test::messageOf(array.get()).SerializeAsString()));
  EXPECT_EQ(*data<std::int16_t>(test::wrapped(parsed)), -1);
}

TEST(SentUint16, IsTheVarintOfItsValue) {
  const auto array = owned(hcyCreateNumericMatrix(1, 1, hcyUINT16_CLASS, hcyREAL));
  *data<std::uint16_t>(array) = 65535;
  EXPECT_EQ(sent(array), SCALAR_OF("02") "92 01 05 0A 03 FF FF 03");
}

template <class Class>
class SentBytes : public testing::Test {
 protected:
  static ArrayHandle create(std::size_t n, hcyComplexity complexity) {
    return owned(hcyCreateNumericMatrix(n == 0 ? 0 : 1, n, Class::type, complexity));
  }

  // The bytes of the type, and the tag of the typed part.
  static constexpr bool isSigned = Class::type == VORTEN_Array::INT8;
  const std::string type = isSigned ? "08 01 " : "08 00 ";
  const std::string part = isSigned ? "8A 01 " : "82 01 ";
};
TYPED_TEST_SUITE(SentBytes, test::ByteClasses, test::ClassNames);

TYPED_TEST(SentBytes, AreTwoByteStringsWhenComplexAndOneWhenReal) {
  const auto complex = this->create(2, hcyCOMPLEX);
  std::memcpy(hcyGetData(complex.get()), "\x01\x02", 2);
  std::memcpy(hcyGetImagData(complex.get()), "\x03\x04", 2);
  EXPECT_EQ(sent(complex), this->type + "12 02 01 02 " + this->part + "08 0A 02 01 02 12 02 03 04");
  const auto real = this->create(2, hcyREAL);
  std::memcpy(hcyGetData(real.get()), "\x01\xFF", 2);
  EXPECT_EQ(sent(real), this->type + "12 02 01 02 " + this->part + "04 0A 02 01 FF");
}

TYPED_TEST(SentBytes, OfNoElementsAreAnEmptyByteStringOnceTheirPointerWasRead) {
  const auto array = this->create(0, hcyREAL);
  EXPECT_EQ(sent(array), this->type + "12 02 00 00");
  EXPECT_EQ(hcyGetData(array.get()), nullptr);
  EXPECT_EQ(sent(array), this->type + "12 02 00 00 " + this->part + "02 0A 00");
}

TYPED_TEST(SentBytes, OfARealArrayStayOneByteStringWhenItsImaginaryPartsWereAskedFor) {
  const auto array = this->create(2, hcyREAL);
  const std::string before = sent(array);
  EXPECT_EQ(hcyGetImagData(array.get()), nullptr);
  EXPECT_EQ(sent(array), before);
}

TEST(SentDouble, OfNoElementsIsItsTypeAndTwoZeros) {
  const auto array = owned(hcyCreateDoubleMatrix(0, 0, hcyREAL));
  EXPECT_EQ(sent(array), "08 09 12 02 00 00");
  EXPECT_EQ(hcyGetPr(array.get()), nullptr);
  EXPECT_EQ(sent(array), "08 09 12 02 00 00 CA 01 00") << "reading makes its part present";
}

TEST(SentDouble, IsLittleEndian) {
  EXPECT_EQ(sent(owned(hcyCreateDoubleScalar(1.0))),
            SCALAR_OF("09") "CA 01 0A 0A 08 00 00 00 00 00 00 F0 3F");
}

TEST(SentLogical, IsAVarint) {
  EXPECT_EQ(sent(owned(hcyCreateLogicalScalar(true))), SCALAR_OF("0A") "D2 01 03 0A 01 01");
}

TEST(SentChar, IsTheVarintOfEachCodeUnit) {
  EXPECT_EQ(sent(owned(hcyCreateString("A\xC3"))), "08 0B 12 02 01 02 DA 01 06 0A 04 41 C3 FF 03");
  EXPECT_EQ(sent(owned(hcyCreateString(""))), "08 0B 12 02 00 00 DA 01 00");
}

TEST(SentCell, HoldsAnEmptyDoubleWhereNothingWasSet) {
  EXPECT_EQ(sent(owned(hcyCreateCellMatrix(1, 1))),
            SCALAR_OF("0D") "E2 01 08 0A 06 08 09 12 02 00 00");
}

TEST(SentStruct, HoldsItsNamesBeforeItsElements) {
  const char* const names[] = {"a", "b"};
  EXPECT_EQ(sent(owned(hcyCreateStructMatrix(1, 1, 2, names))),
            SCALAR_OF("0C") "EA 01 16 0A 01 61 0A 01 62 12 06 08 09 12 02 00 00 "
                            "12 06 08 09 12 02 00 00");
}

TEST(SentSparse, HoldsTypeIndicesAndValues) {
  const auto array = owned(hcyCreateSparseLogicalMatrix(2, 1, 1));
  *hcyGetIr(array.get()) = 1;
  hcyGetJc(array.get())[1] = 1;
  *hcyGetLogicals(array.get()) = true;
  EXPECT_EQ(sent(array), "08 0E 12 02 02 01 F2 01 0F 08 01 12 01 01 1A 02 00 01 8A 01 03 0A 01 01");
}

// The numbers of the fields that are present.
std::vector<int> fieldsOf(const VORTEN_Array& array) {
  std::vector<const google::protobuf::FieldDescriptor*> fields;
  array.GetReflection()->ListFields(array, &fields);
  std::vector<int> numbers;
  for (const auto* field : fields) numbers.push_back(field->number());
  return numbers;
}

TEST(SentArray, HasTypeDimensionsAndTheOnePartOfItsType) {
  for (int type = 0; type <= hcyDOUBLE_CLASS; ++type) {
    for (const hcyComplexity complexity : {hcyREAL, hcyCOMPLEX}) {
      const auto array = owned(hcyCreateNumericMatrix(2, 2, type, complexity));
      EXPECT_EQ(fieldsOf(test::committed(array)), (std::vector<int>{1, 2, test::partNumber(type)}));
    }
  }
  const char* const name = "a";
  hcyArray* const arrays[] = {hcyCreateLogicalMatrix(2, 2), hcyCreateString("ab"),
                              hcyCreateStructMatrix(2, 2, 1, &name), hcyCreateCellMatrix(2, 2),
                              hcyCreateSparse(2, 2, 2, hcyCOMPLEX)};
  int type = hcyLOGICAL_CLASS;
  for (hcyArray* const array : arrays) {
    EXPECT_EQ(fieldsOf(test::committed(owned(array))),
              (std::vector<int>{1, 2, test::partNumber(type++)}));
  }
}

TEST(SentSparse, HasTheOneValuePartOfItsType) {
  const auto doubles = owned(hcyCreateSparse(2, 2, 2, hcyREAL));
  const VORTEN_Array::Sparse& sparseDoubles = dataOf(doubles.get()).sparse();
  EXPECT_TRUE(sparseDoubles.has_type());
  EXPECT_EQ(sparseDoubles.type(), VORTEN_Array::Sparse::DOUBLE);
  EXPECT_TRUE(sparseDoubles.has_qxsparsedouble());
  EXPECT_FALSE(sparseDoubles.has_logical() || sparseDoubles.has_qxsparsesingle());
  const auto logicals = owned(hcyCreateSparseLogicalMatrix(2, 2, 2));
  const VORTEN_Array::Sparse& sparseLogicals = dataOf(logicals.get()).sparse();
  EXPECT_EQ(sparseLogicals.type(), VORTEN_Array::Sparse::LOGICAL);
  EXPECT_TRUE(sparseLogicals.has_logical());
  EXPECT_FALSE(sparseLogicals.has_qxsparsedouble() || sparseLogicals.has_qxsparsesingle());
}

}  // namespace
}  // namespace hcy
