// SPDX-License-Identifier: Apache-2.0
//
// Our reading of an array beside the message library's own, over arrays that are large enough for
// ours to differ: of every length of varint, whole, cut and broken.

#include "wire/read_array.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "support/array_messages.h"
#include "wire/fixed_width.h"
#include "wire/read_message.h"
#include "wire/wire_parts.h"

namespace hcy {
namespace {

class Random {
 public:
  explicit Random(unsigned seed) : engine_(seed) {}
  std::size_t below(std::size_t count) { return engine_() % count; }
  std::uint64_t bits() { return engine_(); }

 private:
  std::mt19937_64 engine_;
};

// A varint of a given length, the shortest or not.
std::string varint(std::uint64_t value, std::size_t length) {
  std::string bytes;
  for (std::size_t i = 1; i < length; ++i, value >>= 7) {
    bytes += static_cast<char>((value & 0x7F) | 0x80);
  }
  return bytes + static_cast<char>(value & 0x7F);
}

std::string varint(std::uint64_t value) {
  std::size_t length = 1;
  for (std::uint64_t rest = value >> 7; rest != 0; rest >>= 7) ++length;
  return varint(value, length);
}

std::string field(int number, const std::string& content) {
  return varint(static_cast<std::uint64_t>(number) << 3 | 2) + varint(content.size()) + content;
}

// Up to 1,000 elements as senders write them, or, now and then, of any length at all.
std::string elements(Random& random) {
  const bool isOdd = random.below(4) == 0;
  std::string packed;
  for (std::size_t i = random.below(1000) + 500; i > 0; --i) {
    const std::size_t kind = random.below(4);
    if (isOdd && kind == 0) {
      packed += varint(random.bits(), 1 + random.below(10 + (random.below(30) == 0 ? 1 : 0)));
    } else if (random.below(50) == 0) {
      packed += std::string(random.below(60), '\x07');
    } else if (kind == 1) {
      packed += varint(static_cast<std::uint64_t>(-1 - static_cast<int>(random.below(40000))));
    } else {
      packed += varint(random.bits() % (kind == 2 ? 128 : 70000));
    }
  }
  if (isOdd && random.below(10) == 0) packed += '\x80';
  return packed;
}

std::string unknownFields() { return field(99, "unknown") + "\xE0\x06\x05"; }

template <class Class>
std::string partOf(Random& random) {
  std::string part = field(1, elements(random));
  if (random.below(2) == 0) part += unknownFields();
  if (random.below(2) == 0) part += field(2, elements(random));
  if (random.below(8) == 0) part += field(1, elements(random));
  return field(16 + static_cast<int>(Class::type), part);
}

template <class Class>
std::string arrayOf(Random& random) {
  const std::uint64_t dimensions[] = {0, 1, 700, 2000, std::uint64_t{1} << 40};
  std::string bytes = "\x08" + varint(static_cast<std::uint64_t>(Class::type));
  bytes += field(2, varint(dimensions[random.below(5)]) + varint(1 + random.below(2)));
  if (random.below(2) == 0) bytes += unknownFields();
  bytes += partOf<Class>(random);
  if (random.below(4) == 0) bytes += partOf<Class>(random);
  if (random.below(2) == 0) bytes += unknownFields();
  return bytes;
}

Bytes bytesOf(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// Of the values of a 16-bit class only the low bits are kept.
template <class Class>
void dropHighBits(VORTEN_Array& array) {
  if constexpr (WidenedClass<Class>) {
    using Element = typename Class::Element;
    if (!test::hasTypedPart(array)) return;
    auto& part = Class::write(array);
    for (auto& element : *part.mutable_elements()) element = static_cast<Element>(element);
    if constexpr (NumericClass<Class>) {
      for (auto& element : *part.mutable_imag_elements()) element = static_cast<Element>(element);
    }
  }
}

template <class Class>
void expectTheSame(const std::string& text) {
  // Without a byte behind it, so that a sanitizer sees what reads on.
  const std::vector<std::uint8_t> bytes(text.begin(), text.end());
  ArrayData ours;
  VORTEN_Array theirs;
  const bool isWhole = mergePart(theirs, bytes);
  EXPECT_EQ(readArray(ours, bytes), isWhole);
  // The message library makes elements of what is not there.
  if (!isWhole) return;
  if (theirs.type() == Class::type) dropHighBits<Class>(theirs);
  EXPECT_TRUE(test::writtenBytes(ours) == theirs.SerializeAsString());
}

template <class Class>
class ReadArray : public testing::Test {};
TYPED_TEST_SUITE(ReadArray, test::IntegerClasses, test::ClassNames);

TYPED_TEST(ReadArray, ReadsWhatTheMessageLibraryReads) {
  Random random(1);
  for (int i = 0; i < 200 && !this->HasFailure(); ++i)
    expectTheSame<TypeParam>(arrayOf<TypeParam>(random));
}

TYPED_TEST(ReadArray, ReadsWhatTheMessageLibraryReadsOfBrokenBytes) {
  Random random(2);
  for (int i = 0; i < 200 && !this->HasFailure(); ++i) {
    std::string bytes = arrayOf<TypeParam>(random);
    // Most of what matters stands at the beginning.
    const std::size_t at = random.below(random.below(2) == 0 ? 40 : bytes.size());
    bytes[at] = static_cast<char>(random.bits());
    expectTheSame<TypeParam>(bytes);
  }
}

TYPED_TEST(ReadArray, ReadsWhatTheMessageLibraryReadsOfTheBeginning) {
  Random random(3);
  for (int i = 0; i < 100 && !this->HasFailure(); ++i) {
    const std::string bytes = arrayOf<TypeParam>(random);
    expectTheSame<TypeParam>(bytes.substr(0, 4097 + random.below(bytes.size())));
  }
}

TYPED_TEST(ReadArray, ReadsWhatTheMessageLibraryReadsAroundAZero) {
  Random random(4);
  for (int i = 0; i < 20 && !this->HasFailure(); ++i) {
    const std::string bytes = arrayOf<TypeParam>(random);
    expectTheSame<TypeParam>(bytes + '\0');
    expectTheSame<TypeParam>(bytes + '\0' + bytes);
    expectTheSame<TypeParam>(field(2, "\x01\x01") + '\0' + bytes);
  }
}

TYPED_TEST(ReadArray, GrowsAListThatTheDimensionsMadeTooSmall) {
  constexpr std::size_t count = 5020;
  for (std::size_t declared = count - 20; declared <= count; ++declared) {
    const std::string bytes =
        "\x08" + varint(static_cast<std::uint64_t>(TypeParam::type)) + field(2, varint(declared)) +
        field(16 + static_cast<int>(TypeParam::type), field(1, std::string(count, '\1')));
    expectTheSame<TypeParam>(bytes);
    ArrayData array;
    readArray(array, bytesOf(bytes));
    EXPECT_LE(array.real.capacity(), array.real.size() * 3 / 2);
  }
}

// There is room for an element for each byte that ends a varint, and these do not end.
TYPED_TEST(ReadArray, WritesNothingForVarintsWithoutAnEnd) {
  const std::string varints[] = {std::string(10, '\x80'), std::string(11, '\x80'),
                                 std::string(5000, '\x80')};
  const bool isFixed =
      TypeParam::type == VORTEN_Array::UINT32 || TypeParam::type == VORTEN_Array::INT32;
  for (const std::string& endless : varints) {
    const std::string bytes =
        "\x08" + varint(static_cast<std::uint64_t>(TypeParam::type)) +
        field(16 + static_cast<int>(TypeParam::type), field(1, "\1" + endless));
    ArrayData array;
    const bool isWhole = readArray(array, bytesOf(bytes));
    if (isFixed) continue;
    EXPECT_FALSE(isWhole);
    EXPECT_EQ(array.real.as<typename TypeParam::Element>().size(), 1U);
  }
}

// What stands behind the list would make up the varint.
TYPED_TEST(ReadArray, EndsAListWhereItsLengthSays) {
  for (std::size_t length = 1; length < 10; ++length) {
    const std::string cut = std::string(5000, '\1') + std::string(length, '\x80');
    const std::string part = field(1, cut) + field(100, "unknown") + field(2, "\1");
    expectTheSame<TypeParam>("\x08" + varint(static_cast<std::uint64_t>(TypeParam::type)) +
                             field(2, varint(6000)) +
                             field(16 + static_cast<int>(TypeParam::type), part));
  }
}

template <class Class>
class ReadNarrow : public testing::Test {
 protected:
  using Element = typename Class::Element;

  static std::string type() { return "\x08" + varint(static_cast<std::uint64_t>(Class::type)); }
  static std::string part(const std::string& content) {
    return field(16 + static_cast<int>(Class::type), content);
  }
  // An array as it is held as an element of a container.
  static ArrayData readAsElement(const VORTEN_Array& element) {
    VORTEN_Array cell = test::arrayOf(VORTEN_Array::CELL, {1, 1});
    *cell.mutable_cell()->add_elements() = element;
    const ArrayData outer = test::dataOf(cell);
    ArrayData array;
    readPackedArray(array, *outer.container().arrays, 0);
    return array;
  }
};
TYPED_TEST_SUITE(ReadNarrow, test::WidenedClasses, test::ClassNames);

TYPED_TEST(ReadNarrow, TakesElementsThatAreNotPacked) {
  const std::string content =
      "\x08\x07" + field(1, "\1\2") + "\x08" + varint(0x10009, 5) + "\x88" + std::string(2, '\0');
  ArrayData array;
  EXPECT_TRUE(readArray(array, bytesOf(this->type() + this->part(content))));
  EXPECT_EQ(test::numbers(array.real.as<typename TypeParam::Element>()),
            (test::Numbers{7, 1, 2, 9, 0}));
  EXPECT_FALSE(array.areWide());
  EXPECT_EQ(array.rest(), nullptr);
}

TYPED_TEST(ReadNarrow, LeavesElementsInTheRestWhoseTypeDoesNotArrive) {
  ArrayData array;
  EXPECT_FALSE(readArray(array, bytesOf(this->part(field(1, "\1\2") + '\0') + this->type())));
  EXPECT_FALSE(array.hasType());
  EXPECT_TRUE(array.real.empty());
  ASSERT_NE(array.rest(), nullptr);
  EXPECT_EQ(test::numbers(TypeParam::read(*array.rest()).elements()), (test::Numbers{1, 2}));
}

// Wider values of an element are sent as they came until others take their place.
TYPED_TEST(ReadNarrow, KeepsWiderValuesOfElements) {
  VORTEN_Array message = test::rowOf<TypeParam>({5, 0x10005});
  auto& part = TypeParam::write(message);
  if constexpr (NumericClass<TypeParam>) {
    test::assign(part.mutable_imag_elements(), {0x10007, 7});
  }
  part.GetReflection()->MutableUnknownFields(&part)->AddVarint(9, 1);
  ArrayData array = this->readAsElement(message);
  EXPECT_TRUE(array.areWide());
  EXPECT_EQ(test::numbers(array.real.as<typename TypeParam::Element>()), (test::Numbers{5, 5}));
  EXPECT_EQ(test::writtenBytes(array), message.SerializeAsString());
  EXPECT_EQ(test::writtenBytes(array.copy()), message.SerializeAsString());
  array.clearWide();
  dropHighBits<TypeParam>(message);
  EXPECT_EQ(test::writtenBytes(array), message.SerializeAsString());
}

TYPED_TEST(ReadNarrow, HoldsNoMoreThanTheElementsOfOrdinaryOnes) {
  const bool isSigned = TypeParam::type == VORTEN_Array::INT16;
  const VORTEN_Array message =
      test::rowOf<TypeParam>({0, 1, 127, 128, 32767, isSigned ? -32768 : 65535});
  const ArrayData array = this->readAsElement(message);
  EXPECT_FALSE(array.areWide());
  EXPECT_EQ(array.rest(), nullptr);
  EXPECT_EQ(test::writtenBytes(array), message.SerializeAsString());
}

template <class Class>
struct AreOfFixedWidth
    : std::bool_constant<!SparseClass<Class> && !ContainerClass<Class> && !isVarint<Class>> {};
template <class Class>
class ReadInPlace : public testing::Test {};
using FixedClasses = test::ClassesThat<AreOfFixedWidth>;
TYPED_TEST_SUITE(ReadInPlace, FixedClasses, test::ClassNames);

// Where they lie as they travel. A body of one output, which begins at each address of the
// alignment in turn, with its parts in either order.
TYPED_TEST(ReadInPlace, LeavesManyElementsInTheMemoryOfTheBody) {
  using Element = typename TypeParam::Element;
  constexpr std::size_t size = std::size_t{1} << 20;
  std::string real(size, '\0');
  std::string imaginary(size, '\0');
  for (std::size_t i = 0; i < size; ++i) real[i] = static_cast<char>(i * 7);
  for (std::size_t i = 0; i < size; ++i) imaginary[i] = static_cast<char>(i * 3 + 1);
  const std::string type = "\x08" + varint(static_cast<std::uint64_t>(TypeParam::type));
  const int number = 16 + static_cast<int>(TypeParam::type);
  for (const std::string& part : {field(1, real) + field(2, imaginary),
                                  field(2, imaginary) + field(1, real), field(1, real)}) {
    const std::string bytes = type + field(2, varint(size / sizeof(Element)) + "\1") +
                              field(number, part) + unknownFields();
    ArrayData expected;
    ASSERT_TRUE(readArray(expected, bytesOf(bytes)));
    for (std::size_t offset = 0; offset < sizeof(Element); ++offset) {
      const auto body = std::make_shared<std::vector<std::uint8_t>>(offset + bytes.size());
      std::ranges::copy(bytes, body->begin() + static_cast<std::ptrdiff_t>(offset));
      ArrayData array;
      EXPECT_TRUE(readArrayInPlace(array, Bytes(*body).subspan(offset), body));
      const bool stays = liesAsItTravels<Element>;
      EXPECT_EQ(body.use_count(), !stays ? 1 : array.imaginary.empty() ? 2 : 3);
      const auto* const address = reinterpret_cast<const std::uint8_t*>(array.real.data());
      EXPECT_EQ(address > body->data() && address < body->data() + body->size(), stays);
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(address) % sizeof(Element), 0U);
      EXPECT_TRUE(test::writtenBytes(array) == test::writtenBytes(expected));
    }
  }
}

TYPED_TEST(ReadInPlace, CopiesFewElementsAndThoseInSeveralPieces) {
  const std::string piece(std::size_t{1} << 20, '\1');
  const std::string type = "\x08" + varint(static_cast<std::uint64_t>(TypeParam::type));
  const int number = 16 + static_cast<int>(TypeParam::type);
  for (const std::string& part :
       {field(1, piece.substr(0, piece.size() - 8)), field(1, piece) + field(1, "\1\2\3\4\5\6\7\b"),
        field(1, "\1\2\3\4\5\6\7\b") + field(1, piece) + field(1, "")}) {
    const std::string bytes = type + field(number, part);
    ArrayData expected;
    ASSERT_TRUE(readArray(expected, bytesOf(bytes)));
    const auto body = std::make_shared<std::vector<std::uint8_t>>(bytes.begin(), bytes.end());
    ArrayData array;
    EXPECT_TRUE(readArrayInPlace(array, *body, body));
    EXPECT_TRUE(test::writtenBytes(array) == test::writtenBytes(expected));
    EXPECT_EQ(body.use_count(), 1);
  }
}

// What was read as another class until its end was seen to be broken stays nowhere.
TYPED_TEST(ReadInPlace, LeavesNothingOfAClassThatDidNotArrive) {
  const std::string piece(std::size_t{1} << 20, '\1');
  const std::string type = "\x08" + varint(static_cast<std::uint64_t>(TypeParam::type));
  const int number = 16 + static_cast<int>(TypeParam::type);
  const std::string bytes = field(number, field(1, piece) + '\0') + type;
  ArrayData expected;
  EXPECT_FALSE(readArray(expected, bytesOf(bytes)));
  const auto body = std::make_shared<std::vector<std::uint8_t>>(bytes.begin(), bytes.end());
  ArrayData array;
  EXPECT_FALSE(readArrayInPlace(array, *body, body));
  EXPECT_EQ(array.hasType(), expected.hasType());
  EXPECT_EQ(array.real.size(), expected.real.size());
  EXPECT_TRUE(test::writtenBytes(array) == test::writtenBytes(expected));
}

template <class Class>
class ReadContainer : public testing::Test {};
TYPED_TEST_SUITE(ReadContainer, test::ContainerClasses, test::ClassNames);

TYPED_TEST(ReadContainer, HasItsElementsWhereItsTypeSays) {
  constexpr bool isCell = TypeParam::type == VORTEN_Array::CELL;
  constexpr int number = isCell ? 28 : 29;
  const auto type = [](int value) { return "\x08" + varint(static_cast<std::uint64_t>(value)); };
  typename TypeParam::Message part;
  *part.add_elements() = test::rowOf<INT32_class>({7});
  const std::string elements = part.SerializeAsString();
  const std::string otherType = type(isCell ? VORTEN_Array::STRUCT : VORTEN_Array::CELL);
  for (const auto& [bytes, isContainer] :
       {std::pair{field(number, elements + '\0') + type(TypeParam::type), false},
        {type(TypeParam::type) + field(number, elements) + field(57 - number, "\x0F") + otherType,
         true},
        {type(TypeParam::type) + field(number, elements) + '\0' + otherType, true}}) {
    ArrayData array;
    EXPECT_FALSE(readArray(array, bytesOf(bytes)));
    const auto& arrays = array.container().arrays;
    EXPECT_EQ(arrays ? arrays->size() : 0U, isContainer ? 1U : 0U);
    const int others = array.rest() ? TypeParam::read(*array.rest()).elements_size() : 0;
    EXPECT_EQ(others, isContainer ? 0 : 1);
  }
}

// The length of an element in more bytes than it needs.
TYPED_TEST(ReadContainer, TakesElementsWithLongerHeads) {
  constexpr int number = TypeParam::type == VORTEN_Array::CELL ? 28 : 29;
  const std::string element = test::rowOf<INT32_class>({7}).SerializeAsString();
  const std::string usual = field(TypeParam::Message::kElementsFieldNumber, element);
  const char tag = usual[0];
  const std::string longer = tag + varint(element.size(), 3) + element;
  const std::string type = "\x08" + varint(static_cast<std::uint64_t>(TypeParam::type));
  ArrayData expected;
  ASSERT_TRUE(readArray(expected, bytesOf(type + field(number, usual + usual + usual))));
  ArrayData array;
  EXPECT_TRUE(readArray(array, bytesOf(type + field(number, usual + longer + usual))));
  EXPECT_EQ(array.container().arrays->size(), 3U);
  EXPECT_EQ(test::writtenBytes(array), test::writtenBytes(expected));
}

// Nor are the dimensions, of which there may be many, multiplied for each field.
TEST(ReadElements, ExpectsTheWholeArrayOnlyInItsFirstField) {
  std::string longest;
  for (int i = 0; i < 10; ++i) longest += varint(UINT64_MAX);
  const std::string part = field(1, "\1") + field(1, longest);
  ArrayData array;
  EXPECT_TRUE(readArray(array, bytesOf("\x08\x06" + field(2, varint(100)) + field(22, part))));
  EXPECT_EQ(array.real.as<std::uint64_t>().size(), 11U);
  EXPECT_LT(array.real.capacity(), 200U);
}

// A list that grew by as little as each field needs would be copied as often as there are fields.
TEST(ReadDimensions, OfManyFieldsGrowSeldom) {
  constexpr std::size_t kFields = 400;
  std::set<std::size_t> capacities;
  std::string bytes;
  for (std::size_t fields = 1; fields <= kFields; ++fields) {
    bytes += field(2, varint(1) + varint(2) + varint(3));
    ArrayData array;
    ASSERT_TRUE(readArray(array, bytesOf(bytes)));
    ASSERT_EQ(array.dimensions.size(), 3 * fields);
    capacities.insert(array.dimensions.capacity());
  }
  EXPECT_LT(capacities.size(), 30U);
}

TEST(ReadSparse, GoesAsDeepAsTheMessageLibrary) {
  std::string bytes = "\x08\x0E" + field(30, field(16, field(1, std::string(8, '\1'))));
  for (int levels = 0; levels < 50; ++levels) {
    ArrayData ours;
    VORTEN_Array theirs;
    EXPECT_EQ(readArray(ours, bytesOf(bytes)), mergePart(theirs, bytesOf(bytes))) << levels;
    bytes = "\x08\x0D" + field(28, field(1, bytes));
  }
}

}  // namespace
}  // namespace hcy
