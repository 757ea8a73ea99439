// SPDX-License-Identifier: Apache-2.0
//
// Arrays of a reply that another sender has put into bytes than the message library: with fields in
// another order, in pieces, more than once, or in more bytes than they need. They are what the
// message library reads of them, and are sent again as it writes that.

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "support/ways_to_arrays.h"
#include "support/wire_bytes.h"
#include "wire/wire_parts.h"

namespace hcy {
namespace {

using test::bytesField;
using test::numberField;
using test::varint;

// A varint in one byte more than it needs.
std::string longVarint(std::uint64_t value) {
  std::string bytes = varint(value);
  bytes.back() = static_cast<char>(bytes.back() | '\x80');
  return bytes + '\0';
}

std::string longBytesField(unsigned number, const std::string& content) {
  return longVarint(number << 3 | 2) + longVarint(content.size()) + content;
}

std::string unknownFields() { return bytesField(99, "unknown") + numberField(100, 5); }

ArrayHandle received(const std::string& bytes) {
  ReceivedArray array;
  EXPECT_TRUE(readReceived(array, test::bytesOf(bytes)));
  return ArrayProxyBuilder::over(std::move(array));
}

// The element of the class as a number, and the number as it is in packed bytes.
template <class Class>
std::string encoded(std::uint64_t number) {
  if constexpr (isVarint<Class>) {
    return varint(number);
  } else {
    const auto element = static_cast<typename Class::Element>(number);
    return {reinterpret_cast<const char*>(&element), sizeof element};
  }
}

// Numbers that take one byte and more as varints; some are negative, where the class has such.
template <class Class>
std::uint64_t numberAt(std::size_t i) {
  if (Class::type == VORTEN_Array::LOGICAL) return i % 3;
  if (Class::type == VORTEN_Array::INT16 && i % 7 == 0) return 0 - i % 200;
  return i % 5 == 0 ? 300 + i % 100 : i % 100;
}

// The elements of a list from one to before another one.
template <class Class>
class List {
 public:
  explicit List(unsigned field) : field_(field) {}

  std::string packed(std::size_t from, std::size_t to) const {
    return bytesField(field_, content(from, to));
  }
  // The tag, the length, or the elements that are varints in more bytes than they need.
  std::string longTag(std::size_t from, std::size_t to) const {
    const std::string bytes = content(from, to);
    return longVarint(field_ << 3 | 2) + varint(bytes.size()) + bytes;
  }
  std::string longLength(std::size_t from, std::size_t to) const {
    const std::string bytes = content(from, to);
    return varint(field_ << 3 | 2) + longVarint(bytes.size()) + bytes;
  }
  std::string longElements(std::size_t from, std::size_t to) const {
    std::string bytes;
    for (std::size_t i = from; i < to; ++i) {
      const std::uint64_t number = numberAt<Class>(i);
      bytes += isVarint<Class> && varint(number).size() < 10 ? longVarint(number)
                                                             : encoded<Class>(number);
    }
    return bytesField(field_, bytes);
  }
  // Each element in a field of its own; elements of bytes have no such form.
  std::string unpacked(std::size_t from, std::size_t to) const {
    if (ByteClass<Class>) return packed(from, to);
    const unsigned wireType = isVarint<Class> ? 0 : sizeof(typename Class::Element) == 8 ? 1 : 5;
    std::string bytes;
    for (std::size_t i = from; i < to; ++i) {
      bytes += varint(field_ << 3 | wireType) + encoded<Class>(numberAt<Class>(i));
    }
    return bytes;
  }

 private:
  static std::string content(std::size_t from, std::size_t to) {
    std::string bytes;
    for (std::size_t i = from; i < to; ++i) bytes += encoded<Class>(numberAt<Class>(i));
    return bytes;
  }

  unsigned field_;
};

template <class Class>
std::string typeField() {
  return numberField(1, static_cast<std::uint64_t>(Class::type));
}
std::string rowOf(std::size_t columns) { return bytesField(2, varint(1) + varint(columns)); }

template <class Class>
std::string part(const std::string& content) {
  return bytesField(static_cast<unsigned>(test::partNumber(Class::type)), content);
}

// The parts of other classes, which no getter reads.
template <class Class>
std::string otherParts() {
  std::string bytes;
  if (Class::type != VORTEN_Array::INT16) bytes += part<INT16_class>(bytesField(1, "\1\2"));
  if (Class::type != VORTEN_Array::DOUBLE) {
    bytes += part<DOUBLE_class>(bytesField(1, std::string(8, '\1')));
  }
  return bytes + part<CELL_class>(bytesField(1, typeField<INT8_class>()));
}

// The forms of the content of a part of `count` elements.
template <class Class>
std::vector<std::string> contents(std::size_t count) {
  const List<Class> real(1);
  const List<Class> imaginary(2);
  const std::size_t a = count / 3;
  const std::size_t b = 2 * a;
  std::vector<std::string> forms = {
      real.packed(0, count),
      real.unpacked(0, count),
      real.unpacked(0, a) + real.packed(a, count),
      real.packed(0, a) + real.unpacked(a, count),
      real.packed(0, a) + real.unpacked(a, b) + real.packed(b, count),
      real.unpacked(0, a) + real.packed(a, b) + real.unpacked(b, count),
      real.packed(0, a) + real.packed(a, count),
      real.packed(0, 0) + real.packed(0, count) + real.packed(0, 0),
      real.longTag(0, count),
      real.longLength(0, count),
      real.longElements(0, count),
      unknownFields() + real.packed(0, a) + unknownFields() + real.packed(a, count)};
  if constexpr (NumericClass<Class>) {
    forms.insert(forms.end(), {imaginary.packed(0, count) + real.packed(0, count),
                               imaginary.unpacked(0, a) + real.packed(0, a) +
                                   imaginary.packed(a, count) + real.unpacked(a, count),
                               real.unpacked(0, count) + imaginary.unpacked(0, count),
                               real.packed(0, a) + imaginary.packed(0, a) + real.packed(a, count) +
                                   imaginary.packed(a, count),
                               real.packed(0, count) + imaginary.longLength(0, count),
                               real.packed(0, count) + imaginary.longElements(0, count)});
  }
  return forms;
}

// The forms of an array of `count` elements.
template <class Class>
std::vector<std::string> arrays(std::size_t count) {
  const std::string type = typeField<Class>();
  const std::string shape = rowOf(count);
  const std::string whole = part<Class>(List<Class>(1).packed(0, count));
  const std::size_t half = count / 2;
  std::vector<std::string> forms = {
      whole + shape + type,
      shape + whole + type,
      numberField(1, 3) + type + shape + whole,
      type + bytesField(2, varint(1)) + whole + bytesField(2, varint(count)),
      type + numberField(2, 1) + numberField(2, count) + whole,
      type + shape + part<Class>(List<Class>(1).packed(0, half)) +
          part<Class>(List<Class>(1).packed(half, count)),
      type + shape + part<Class>(List<Class>(1).unpacked(0, half)) + unknownFields() +
          part<Class>(List<Class>(1).packed(half, count)),
      type + shape + part<Class>("") + whole,
      unknownFields() + type + unknownFields() + shape + unknownFields() + whole + unknownFields(),
      otherParts<Class>() + type + shape + whole,
      type + shape + whole + otherParts<Class>(),
      longVarint(8) + varint(static_cast<std::uint64_t>(Class::type)) + shape + whole,
      varint(8) + longVarint(static_cast<std::uint64_t>(Class::type)) + shape + whole,
      type + bytesField(2, longVarint(1) + varint(count)) + whole,
      type + longBytesField(2, varint(1) + varint(count)) + whole,
      type + shape +
          longBytesField(static_cast<unsigned>(test::partNumber(Class::type)),
                         List<Class>(1).packed(0, count)),
      type + shape + numberField(7, 2) + whole,
      whole + type + rowOf(count + 1),
      type + rowOf(1) + whole};
  for (const std::string& content : contents<Class>(count)) {
    forms.push_back(type + shape + part<Class>(content));
  }
  return forms;
}

template <class Class>
struct HoldNumbers : std::bool_constant<!SparseClass<Class> && !ContainerClass<Class>> {};
using NumberClasses = test::ClassesThat<HoldNumbers>;

VORTEN_Array parsedArray(const std::string& bytes) {
  VORTEN_Array array;
  EXPECT_TRUE(array.ParseFromString(bytes));
  return array;
}

// What the getters give, in the caller's own form.
template <class Class>
void expectHandedOut(const ArrayHandle& array, const VORTEN_Array& message) {
  const auto expect = [&](const void* data, const auto& elements) {
    const auto count = static_cast<std::size_t>(elements.size());
    if (count == 0 || count < hcyGetNumberOfElements(array.get())) {
      EXPECT_EQ(data, nullptr);
      return;
    }
    ASSERT_NE(data, nullptr);
    std::string expected;
    for (const auto wireElement : elements) {
      const auto element = static_cast<typename Class::Element>(wireElement);
      expected.append(reinterpret_cast<const char*>(&element), sizeof element);
    }
    const std::string bytes(static_cast<const char*>(data), expected.size());
    EXPECT_TRUE(bytes == expected);
  };
  const auto& read = Class::read(message);
  const void* const data = Class::type == VORTEN_Array::LOGICAL ? hcyGetLogicals(array.get())
                           : Class::type == VORTEN_Array::CHAR  ? hcyGetChars(array.get())
                                                                : hcyGetData(array.get());
  expect(data, read.elements());
  if constexpr (NumericClass<Class>) {
    EXPECT_EQ(hcyIsComplex(array.get()), !read.imag_elements().empty());
    expect(hcyGetImagData(array.get()), read.imag_elements());
  }
}

template <class Class>
class OtherForm : public testing::Test {
 protected:
  // Calls use(bytes) for each form of each size.
  template <class Use>
  void forEachForm(Use use) {
    for (const std::size_t count : {1U, 4U, 5000U}) {
      const auto forms = arrays<Class>(count);
      for (std::size_t i = 0; i < forms.size() && !this->HasFailure(); ++i) {
        SCOPED_TRACE("form " + std::to_string(i) + " of " + std::to_string(count) + " elements");
        use(forms[i]);
      }
    }
  }
};
TYPED_TEST_SUITE(OtherForm, NumberClasses, test::ClassNames);

TYPED_TEST(OtherForm, IsReadAsTheMessageLibraryReadsIt) {
  this->forEachForm([](const std::string& bytes) {
    const VORTEN_Array message = parsedArray(bytes);
    expectHandedOut<TypeParam>(received(bytes), message);
    expectHandedOut<TypeParam>(test::duplicateOf(received(bytes)), message);
  });
}

TYPED_TEST(OtherForm, IsSentAgainAsTheMessageLibraryWritesIt) {
  this->forEachForm([](const std::string& bytes) {
    const std::string written = parsedArray(bytes).SerializeAsString();
    const ArrayHandle array = received(bytes);
    EXPECT_TRUE(test::sent(array).SerializeAsString() == written);
    EXPECT_TRUE(test::sent(test::duplicateOf(array)).SerializeAsString() == written);
    EXPECT_TRUE(test::committed(array).SerializeAsString() == written);
  });
}

// The bytes in a container, in a container of this one, and beside elements that need no change.
std::vector<std::string> containersOf(const std::string& array) {
  const std::string plain = test::doubleScalar(5);
  const std::string head = typeField<CELL_class>() + rowOf(3);
  const std::string elements = bytesField(1, array) + bytesField(1, plain) + bytesField(1, array);
  const std::string cell = head + part<CELL_class>(elements);
  const std::string structure = typeField<STRUCT_class>() + rowOf(1) +
                                part<STRUCT_class>(bytesField(1, "a") + bytesField(2, array) +
                                                   bytesField(1, "b") + bytesField(2, plain));
  return {cell, structure, head + part<CELL_class>(bytesField(1, structure) + elements),
          head + part<CELL_class>(bytesField(1, array)) + part<CELL_class>(bytesField(1, plain)),
          part<CELL_class>(elements) + unknownFields() + head};
}

// The first element of the innermost container.
ArrayHandle innermost(const ArrayHandle& container) {
  ArrayHandle element = test::onlyElementOf(container);
  return hcyIsStruct(element.get()) ? test::onlyElementOf(element) : std::move(element);
}

TYPED_TEST(OtherForm, IsReadInContainersAsTheMessageLibraryReadsIt) {
  this->forEachForm([](const std::string& bytes) {
    const VORTEN_Array message = parsedArray(bytes);
    for (const std::string& container : containersOf(bytes)) {
      expectHandedOut<TypeParam>(innermost(received(container)), message);
    }
  });
}

TYPED_TEST(OtherForm, IsSentInContainersAsTheMessageLibraryWritesIt) {
  this->forEachForm([](const std::string& bytes) {
    for (const std::string& container : containersOf(bytes)) {
      const std::string written = parsedArray(container).SerializeAsString();
      const ArrayHandle array = received(container);
      EXPECT_TRUE(test::sent(array).SerializeAsString() == written);
      const ArrayHandle element = innermost(array);
      EXPECT_TRUE(test::sent(element).SerializeAsString() ==
                  parsedArray(bytes).SerializeAsString());
      EXPECT_TRUE(test::sent(array).SerializeAsString() == written) << "its element was read";
      EXPECT_TRUE(test::sent(test::duplicateOf(array)).SerializeAsString() == written);
    }
  });
}

// A sparse array: its type, row indices, column starts and values.
std::vector<std::string> sparseForms() {
  const std::string head = typeField<SPARSE_class>() + bytesField(2, "\3\2");
  const std::string type = numberField(1, 0);
  const std::string rows = bytesField(2, std::string("\0\2\1", 3));
  const std::string starts = bytesField(3, std::string("\0\2\3", 3));
  const std::string number = bytesField(1, std::string(8, '\1'));
  const std::string values = bytesField(16, number + number + number);
  return {head + part<SPARSE_class>(values + starts + rows + type),
          part<SPARSE_class>(type + rows + starts + values) + head,
          head + part<SPARSE_class>(type + rows) + part<SPARSE_class>(starts + values),
          head + part<SPARSE_class>(bytesField(16, number) + type + rows + starts +
                                    bytesField(16, number + number)),
          head + part<SPARSE_class>(numberField(2, 0) + numberField(2, 2) + bytesField(2, "\1") +
                                    numberField(3, 0) + bytesField(3, "\2") + numberField(3, 3) +
                                    values),
          head + part<SPARSE_class>(
                     type + longBytesField(2, longVarint(0) + longVarint(2) + longVarint(1)) +
                     starts + values),
          head + part<SPARSE_class>(unknownFields() + type + rows + starts + unknownFields() +
                                    bytesField(17, bytesField(1, "\1\1\1")) + values),
          otherParts<SPARSE_class>() + head + part<SPARSE_class>(rows + starts + values)};
}

void expectSparse(const ArrayHandle& array) {
  ASSERT_NE(array, nullptr);
  ASSERT_EQ(hcyGetNzmax(array.get()), 3U);
  const std::size_t rows[] = {0, 2, 1};
  const std::size_t starts[] = {0, 2, 3};
  EXPECT_EQ(std::memcmp(hcyGetIr(array.get()), rows, sizeof rows), 0);
  EXPECT_EQ(std::memcmp(hcyGetJc(array.get()), starts, sizeof starts), 0);
  const std::string bytes(24, '\1');
  EXPECT_EQ(std::memcmp(hcyGetPr(array.get()), bytes.data(), 24), 0);
}

TEST(OtherFormOfSparse, IsReadAndSentAsTheMessageLibraryDoes) {
  for (const std::string& bytes : sparseForms()) {
    const ArrayHandle array = received(bytes);
    expectSparse(array);
    EXPECT_EQ(test::sent(array).SerializeAsString(), parsedArray(bytes).SerializeAsString());
    for (const std::string& container : containersOf(bytes)) {
      const ArrayHandle outer = received(container);
      expectSparse(innermost(outer));
      EXPECT_EQ(test::sent(outer).SerializeAsString(), parsedArray(container).SerializeAsString());
    }
  }
}

}  // namespace
}  // namespace hcy
