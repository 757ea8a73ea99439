// SPDX-License-Identifier: Apache-2.0

#include "notations/npy.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "notations/array_json.h"
#include "notations/no_notation.h"
#include "random_arrays.h"
#include "same_array.h"
#include "text/source_text.h"

namespace hcy::test {
namespace {

using hcyclient::Array;
using namespace std::string_view_literals;

std::string fileOf(const std::string& dictionary, const std::string& data) {
  std::string file("\x93NUMPY\1\0", 8);
  file += static_cast<char>(dictionary.size());
  return file + '\0' + dictionary + data;
}

std::string fileOf(const std::string& type, const std::string& shape, const std::string& data,
                   const std::string& isByColumns = "False") {
  return fileOf(
      "{'descr': '" + type + "', 'fortran_order': " + isByColumns + ", 'shape': " + shape + ", }",
      data);
}

template <class T>
std::string bytesOf(const std::vector<T>& values) {
  return {reinterpret_cast<const char*>(values.data()), values.size() * sizeof(T)};
}

std::string meaningOf(const std::string& file) {
  try {
    return tools::toJson(tools::arrayOfNpy(file));
  } catch (const tools::BadInput& problem) {
    return problem.what();
  }
}

TEST(Npy, elementsStandByRowsOrByColumns) {
  const std::string data = bytesOf<double>({1, 2, 3, 4, 5, 6});
  EXPECT_EQ(meaningOf(fileOf("<f8", "(2, 3)", data)), "[[1,2,3],[4,5,6]]");
  EXPECT_EQ(meaningOf(fileOf("<f8", "(2, 3)", data, "True")), "[[1,3,5],[2,4,6]]");
  EXPECT_EQ(meaningOf(fileOf("<f8", "(1, 2, 3)", data)),
            R"({"$double":[1,4,2,5,3,6],"$shape":[1,2,3]})");
  EXPECT_EQ(meaningOf(fileOf("<f8", "(6,)", data)), "[[1],[2],[3],[4],[5],[6]]");
  EXPECT_EQ(meaningOf(fileOf("<f8", "()", data.substr(0, 8))), "1");
  EXPECT_EQ(meaningOf(fileOf("<f8", "(0, 3)", "")), R"({"$double":[],"$shape":[0,3]})");
}

TEST(Npy, everyTypeThatHasAClass) {
  const std::string bytes("\1\2\3\4\5\6\7\x88", 8);
  EXPECT_EQ(meaningOf(fileOf("|u1", "()", bytes.substr(7))), R"({"$uint8":136})");
  EXPECT_EQ(meaningOf(fileOf("|i1", "()", bytes.substr(7))), R"({"$int8":-120})");
  EXPECT_EQ(meaningOf(fileOf("<u2", "()", bytes.substr(6))), R"({"$uint16":34823})");
  EXPECT_EQ(meaningOf(fileOf(">u2", "()", bytes.substr(6))), R"({"$uint16":1928})");
  EXPECT_EQ(meaningOf(fileOf("<i2", "()", bytes.substr(6))), R"({"$int16":-30713})");
  EXPECT_EQ(meaningOf(fileOf("<u4", "()", bytes.substr(0, 4))), R"({"$uint32":67305985})");
  EXPECT_EQ(meaningOf(fileOf(">i4", "()", bytes.substr(0, 4))), R"({"$int32":16909060})");
  EXPECT_EQ(meaningOf(fileOf("<u8", "()", bytes)), R"({"$uint64":9801809732607083009})");
  EXPECT_EQ(meaningOf(fileOf(">i8", "()", bytes)), R"({"$int64":72623859790382984})");
  EXPECT_EQ(meaningOf(fileOf(">f4", "()", std::string("\x3f\x80\0\0", 4))), R"({"$single":1})");
  // 1.5, -2, the smallest number above 0, and the infinities.
  EXPECT_EQ(meaningOf(fileOf("<f2", "(1, 4)", std::string("\0\x3e\0\xc0\1\0\0\x7c", 8))),
            R"({"$single":[1.5,-2,5.9604645e-08,"Infinity"]})");
  EXPECT_EQ(meaningOf(fileOf(">f2", "(1, 3)", std::string("\x3e\0\x7e\0\x80\0", 6))),
            R"({"$single":[1.5,"NaN",-0.0]})");
  EXPECT_EQ(meaningOf(fileOf("|b1", "(2,)", std::string("\0\2", 2))), "[[false],[true]]");
  EXPECT_EQ(meaningOf(fileOf("<c8", "()", bytesOf<float>({1, 2}))),
            R"({"$single":{"$complex":{"re":1,"im":2}}})");
  EXPECT_EQ(meaningOf(fileOf("<c16", "(1, 2)", bytesOf<double>({1, 2, 3, 4}))),
            R"({"$complex":{"re":[1,3],"im":[2,4]}})");
}

TEST(Npy, textsAreChar) {
  EXPECT_EQ(meaningOf(fileOf("<U3", "()", bytesOf<std::uint32_t>({'h', 0x1F600, 0}))), "\"h😀\"");
  EXPECT_EQ(meaningOf(fileOf("<U2", "(2,)", bytesOf<std::uint32_t>({'a', 'b', 'c', 0}))),
            R"({"$char":["ab","c\u0000"]})");
  EXPECT_EQ(meaningOf(fileOf("<U1", "(1, 2)", bytesOf<std::uint32_t>({'a', 'b'}))), R"("ab")");
  EXPECT_EQ(meaningOf(fileOf("<U2", "(1, 1)", bytesOf<std::uint32_t>({'a', 'b'}))),
            "strings in a .npy file of several dimensions must be single characters");
  EXPECT_EQ(meaningOf(fileOf("<U1", "()", bytesOf<std::uint32_t>({0x110000}))),
            "a string in the .npy file contains an invalid character");
  EXPECT_EQ(meaningOf(fileOf("<U1", "(1,)", bytesOf<std::uint32_t>({0x10000}))),
            "an array of strings in a .npy file cannot contain characters above U+FFFF");
}

TEST(Npy, byteStringsAreChar) {
  EXPECT_EQ(meaningOf(fileOf("|S3", "()", std::string("ab\0", 3))), R"("ab")");
  EXPECT_EQ(meaningOf(fileOf("|S2", "(2,)", std::string("abc\0", 4))),
            R"({"$char":["ab","c\u0000"]})");
  EXPECT_EQ(meaningOf(fileOf("|S1", "(1, 2)", "ab")), R"("ab")");
  EXPECT_EQ(meaningOf(fileOf("|S1", "()", "\xe9")),
            "a byte string in the .npy file is not ASCII; save it as type U");
}

TEST(Npy, laterVersionsHaveALongerLengthOfTheHeader) {
  for (const char version : {'\2', '\3'}) {
    const std::string first = fileOf("<f8", "(1,)", bytesOf<double>({1}));
    std::string later = first.substr(0, 10) + std::string(2, '\0') + first.substr(10);
    later[6] = version;
    EXPECT_EQ(meaningOf(later), "1");
    EXPECT_EQ(meaningOf(later.substr(0, 11)), "the header of this .npy file is damaged");
  }
}

TEST(Npy, thereAreAtMost64Dimensions) {
  std::string shape = "(";
  for (int i = 0; i < 64; ++i) shape += "1,";
  const std::string data = bytesOf<std::uint8_t>({7});
  const auto fileOfShape = [&](const std::string& dimensions) {
    const std::string dictionary =
        "{'descr': '|u1', 'fortran_order': False, 'shape': " + dimensions + ")}";
    return fileOf(dictionary, data);
  };
  EXPECT_EQ(tools::arrayOfNpy(fileOfShape(shape)).shape().size(), 64U);
  EXPECT_EQ(meaningOf(fileOfShape(shape + "1,")), "the header of this .npy file is damaged");
  const Array array = Array::zeros<double>(hcyclient::Shape(64, 1));
  EXPECT_EQ(differenceOf(array, tools::arrayOfNpy(tools::npyOf(array))), "");
}

TEST(Npy, whatIsDamagedOrHasNoClassIsRefused) {
  const std::string damaged = "the header of this .npy file is damaged";
  const std::string whole = fileOf("<f8", "(1,)", bytesOf<double>({1}));
  EXPECT_EQ(meaningOf(""), "this is not a .npy file");
  EXPECT_EQ(meaningOf("[1,2]"), "this is not a .npy file");
  for (std::size_t length = 6; length < whole.size() - 8; ++length) {
    EXPECT_EQ(meaningOf(whole.substr(0, length)), damaged) << length;
  }
  EXPECT_EQ(meaningOf(whole.substr(0, whole.size() - 1)),
            "the .npy file is damaged: its header calls for 1 element of 8 bytes, but it has 7 "
            "bytes of data");
  EXPECT_EQ(meaningOf(whole + "x"),
            "the .npy file is damaged: its header calls for 1 element of 8 bytes, but it has 9 "
            "bytes of data");
  EXPECT_EQ(meaningOf(fileOf("<f3", "()", "xxx")), "the NumPy type <f3 is not supported");
  EXPECT_EQ(meaningOf(fileOf("<f16", "()", "")),
            "the NumPy type <f16 (longdouble) is not supported");
  EXPECT_EQ(meaningOf(fileOf("<c32", "()", "")),
            "the NumPy type <c32 (clongdouble) is not supported");
  EXPECT_EQ(meaningOf(fileOf("|O", "()", "")), "the NumPy type |O is not supported");
  EXPECT_EQ(meaningOf(fileOf("{'descr': [('a', '<f8')], 'fortran_order': False, 'shape': ()}", "")),
            "structured NumPy types are not supported");
  EXPECT_EQ(meaningOf(fileOf("{'descr': '<f8', 'shape': ()}", "12345678")), damaged);
  EXPECT_EQ(meaningOf(fileOf("<f8", "(-1,)", "")), damaged);
  EXPECT_EQ(meaningOf(fileOf("<f8", "(2147483647, 2147483647, 2147483647)", "")),
            "the .npy file has more elements than an array can have");
  EXPECT_EQ(meaningOf(std::string("\x93NUMPY\4\0\1\0{", 11)),
            "version 4 of the .npy format is not supported");
}

TEST(Npy, whatNumpyHasATypeForIsReadBackAsTheSameArray) {
  RandomArrays arrays(20261122);
  int written = 0;
  for (int i = 0; i < 20000; ++i) {
    const Array array = arrays.next();
    std::string file;
    try {
      file = tools::npyOf(array);
    } catch (const tools::NoNotation&) {
      continue;
    }
    ++written;
    const Array read = tools::arrayOfNpy(file);
    // An array without elements is real.
    ASSERT_EQ(differenceOf(array, read), "") << tools::toJson(array);
  }
  EXPECT_GT(written, 5000);
}

TEST(Npy, emptyTextKeepsItsShape) {
  for (const hcyclient::Shape& shape :
       {hcyclient::Shape{0, 0}, hcyclient::Shape{0, 3}, hcyclient::Shape{1, 0},
        hcyclient::Shape{3, 0}, hcyclient::Shape{0, 2, 2}}) {
    const Array text = Array::zeros<char16_t>(shape);
    EXPECT_EQ(differenceOf(text, tools::arrayOfNpy(tools::npyOf(text))), "") << tools::toJson(text);
  }
}

TEST(Npy, aStringThatEndsInNulIsRefused) {
  for (const std::u16string_view text : {u"ab\0"sv, u"\0"sv, u"a\0\0"sv}) {
    EXPECT_THROW(tools::npyOf(Array(text)), tools::NoNotation);
  }
  const Array inside(u"a\0b"sv);
  EXPECT_EQ(differenceOf(inside, tools::arrayOfNpy(tools::npyOf(inside))), "");
}

TEST(Npy, whatNumpyHasNoTypeForIsRefused) {
  EXPECT_THROW(tools::npyOf(Array::cells({1, 1})), tools::NoNotation);
  EXPECT_THROW(tools::npyOf(Array::structs({1, 1}, {"a"})), tools::NoNotation);
  EXPECT_THROW(tools::npyOf(Array::sparse<double>(1, 1, 1)), tools::NoNotation);
  EXPECT_THROW(tools::npyOf(Array::zeros<std::complex<std::int8_t>>(1, 1)), tools::NoNotation);
  EXPECT_THROW(tools::npyOf(Array::zeros<double>(hcyclient::Shape(65, 1))), tools::NoNotation);
}

}  // namespace
}  // namespace hcy::test
