// SPDX-License-Identifier: Apache-2.0
//
// What a message holds before and after its array is committed.

#include <cstdint>

#include "support/wrapped_arrays.h"

namespace hcy {
namespace {

using test::committed;
using test::Numbers;
using test::numbers;
using test::owned;
using test::scalarsOf;
using test::wrapped;

template <class Class>
class NarrowCommit : public testing::Test {
 protected:
  using Element = typename Class::Element;
  static Element* real(const ArrayHandle& array) {
    return static_cast<Element*>(hcyGetData(array.get()));
  }
  static Element* imaginary(const ArrayHandle& array) {
    return static_cast<Element*>(hcyGetImagData(array.get()));
  }
};
using NarrowClasses = testing::Types<UINT16_class, INT16_class>;
TYPED_TEST_SUITE(NarrowCommit, NarrowClasses, test::ClassNames);

TYPED_TEST(NarrowCommit, WritesTheElementsIntoTheContent) {
  const auto array = ArrayProxyBuilder::over(test::contentOf(test::rowOf<TypeParam>({1, 2})));
  this->real(array)[0] = 7;
  const ArrayData& content = array->data();
  const auto elements = [&] { return numbers(content.real.as<typename TypeParam::Element>()); };
  EXPECT_EQ(elements(), (Numbers{1, 2}));
  committed(array);
  EXPECT_EQ(elements(), (Numbers{7, 2}));
  EXPECT_TRUE(content.imaginary.empty());
}

TYPED_TEST(NarrowCommit, WritesBothPartsOfAComplexArray) {
  const auto array = wrapped(test::complexRowOf<TypeParam>({1, 2}, {3, 4}));
  this->real(array)[1] = 8;
  this->imaginary(array)[0] = 9;
  const VORTEN_Array message = committed(array);
  const auto& part = TypeParam::read(message);
  EXPECT_EQ(numbers(part.elements()), (Numbers{1, 8}));
  EXPECT_EQ(numbers(part.imag_elements()), (Numbers{9, 4}));
}

TYPED_TEST(NarrowCommit, WidensByValue) {
  const auto array = wrapped(test::rowOf<TypeParam>({1}));
  this->real(array)[0] = static_cast<typename TypeParam::Element>(0xFFFF);
  const double expected = TypeParam::type == VORTEN_Array::INT16 ? -1.0 : 65535.0;
  EXPECT_EQ(numbers(TypeParam::read(committed(array)).elements()), Numbers{expected});
}

TYPED_TEST(NarrowCommit, KeepsTheLowBitsOfWiderValues) {
  const auto array = wrapped(test::rowOf<TypeParam>({0x10005, -65535}));
  EXPECT_EQ(this->real(array)[0], 5);
  EXPECT_EQ(this->real(array)[1], 1);
  EXPECT_EQ(numbers(TypeParam::read(committed(array)).elements()), (Numbers{5, 1}));
}

TYPED_TEST(NarrowCommit, WritesTheBuffersWholeWhateverTheContentHolds) {
  const auto array = wrapped(test::complexRowOf<TypeParam>({1, 2, 3}, {4, 5, 6}));
  array->data().real.truncate(0);
  array->data().imaginary.resize(4);
  const VORTEN_Array message = committed(array);
  const auto& part = TypeParam::read(message);
  EXPECT_EQ(numbers(part.elements()), (Numbers{1, 2, 3}));
  EXPECT_EQ(numbers(part.imag_elements()), (Numbers{4, 5, 6}));
}

TYPED_TEST(NarrowCommit, FindsTheContentResizedWithTheArray) {
  const auto array =
      ArrayProxyBuilder::over(test::contentOf(test::complexRowOf<TypeParam>({1, 2}, {3, 4})));
  hcySetN(array.get(), 3);
  const VORTEN_Array message = test::messageOf(array.get());
  const auto& part = TypeParam::read(message);
  EXPECT_EQ(part.elements_size(), 3);
  EXPECT_EQ(part.imag_elements_size(), 3);
}

TYPED_TEST(NarrowCommit, WritesImaginaryPartsThatCameBackWithTheElements) {
  const auto array = wrapped(test::complexRowOf<TypeParam>({1, 2}, {3, 4}));
  hcySetM(array.get(), 0);
  hcySetM(array.get(), 1);
  ASSERT_NE(this->imaginary(array), nullptr);
  this->imaginary(array)[1] = 6;
  EXPECT_EQ(numbers(TypeParam::read(committed(array)).imag_elements()), (Numbers{0, 6}));
}

TYPED_TEST(NarrowCommit, WritesWhatTheShapeChangedTo) {
  const auto array = wrapped(test::complexRowOf<TypeParam>({1, 2}, {3, 4}));
  hcySetM(array.get(), 0);
  EXPECT_TRUE(TypeParam::read(committed(array)).elements().empty());
  hcySetM(array.get(), 1);
  this->real(array)[0] = 5;
  EXPECT_EQ(numbers(TypeParam::read(committed(array)).elements()), (Numbers{5, 0}));
}

TEST(CharCommit, MarksTheTextPresentAndWritesItsCodeUnits) {
  const auto empty = wrapped(test::arrayOf(VORTEN_Array::CHAR, {0, 0}));
  EXPECT_FALSE(test::messageOf(empty.get()).has_qxchar());
  EXPECT_TRUE(test::sent(owned(hcyDuplicateArray(empty.get()))).has_qxchar());
  EXPECT_TRUE(committed(empty).has_qxchar());

  const auto array = owned(hcyCreateString("\xFFz"));
  EXPECT_EQ(numbers(committed(array).qxchar().elements()), (Numbers{65535, 'z'}));
}

TEST(CharCommit, FindsTheContentResizedWithTheArray) {
  const auto array = ArrayProxyBuilder::over(test::contentOf(test::rowOf<CHAR_class>({'a', 'b'})));
  hcySetN(array.get(), 3);
  EXPECT_EQ(numbers(test::messageOf(array.get()).qxchar().elements()), (Numbers{'a', 'b', 0}));
}

TEST(CharCommit, WritesTheBufferWholeWhateverTheContentHolds) {
  const auto array = wrapped(test::rowOf<CHAR_class>({'a', 'b'}));
  array->data().real.truncate(0);
  EXPECT_EQ(numbers(committed(array).qxchar().elements()), (Numbers{'a', 'b'}));
}

TEST(CharCommit, KeepsTheLowBitsOfWiderUnits) {
  const auto array = wrapped(test::rowOf<CHAR_class>({0x10041}));
  EXPECT_EQ(hcyGetChars(array.get())[0], 0x41);
  EXPECT_EQ(numbers(committed(array).qxchar().elements()), Numbers{0x41});
}

template <class Class>
class NarrowElement : public testing::Test {
 protected:
  // What a call sends of the one element of a cell array.
  static Numbers sent(const ArrayHandle& cell) {
    const VORTEN_Array message = test::sent(cell);
    return numbers(Class::read(message.cell().elements(0)).elements());
  }
};
TYPED_TEST_SUITE(NarrowElement, test::WidenedClasses, test::ClassNames);

TYPED_TEST(NarrowElement, IsSentAsItWasUntilItIsStoredBack) {
  VORTEN_Array message = test::arrayOf(VORTEN_Array::CELL, {1, 1});
  *message.mutable_cell()->add_elements() = test::rowOf<TypeParam>({1, 2});
  const auto cell = wrapped(message);
  const auto element = owned(hcyGetCell(cell.get(), 0));
  static_cast<typename TypeParam::Element*>(element->getData())[0] = 7;
  const VORTEN_Array asCommitted = committed(cell);
  EXPECT_EQ(numbers(TypeParam::read(asCommitted.cell().elements(0)).elements()), (Numbers{1, 2}));
  EXPECT_EQ(this->sent(cell), (Numbers{1, 2}));
  hcySetCell(cell.get(), 0, element.get());
  EXPECT_EQ(this->sent(cell), (Numbers{7, 2}));
}

// Wider values than those of its class are not what the handle shows, and are not sent.
TYPED_TEST(NarrowElement, SendsWhatItShows) {
  VORTEN_Array message = test::arrayOf(VORTEN_Array::CELL, {1, 1});
  *message.mutable_cell()->add_elements() = test::rowOf<TypeParam>({0x10005, 6});
  const auto cell = wrapped(message);
  const auto element = owned(hcyGetCell(cell.get(), 0));
  static_cast<typename TypeParam::Element*>(element->getData())[1] = 7;
  EXPECT_EQ(numbers(TypeParam::read(test::sent(element)).elements()), (Numbers{5, 7}));
  EXPECT_EQ(this->sent(cell), (Numbers{0x10005, 6}));
  const auto copy = owned(hcyDuplicateArray(element.get()));
  static_cast<typename TypeParam::Element*>(copy->getData())[0] = 8;
  EXPECT_EQ(numbers(TypeParam::read(test::sent(copy)).elements()), (Numbers{8, 7}));
  hcySetCell(cell.get(), 0, copy.get());
  EXPECT_EQ(this->sent(cell), (Numbers{8, 7}));
}

template <class Class>
class ContainerCommit : public testing::Test {
 protected:
  static ArrayHandle create(std::size_t m, std::size_t n) {
    const char* const name = "x";
    return owned(Class::type == VORTEN_Array::CELL ? hcyCreateCellMatrix(m, n)
                                                   : hcyCreateStructMatrix(m, n, 1, &name));
  }
  static void set(const ArrayHandle& array, std::size_t index, int value) {
    const auto element = wrapped(test::rowOf<INT32_class>({value}));
    hcySetCell(array.get(), index, element.get());
    hcySetField(array.get(), index, "x", element.get());
  }
  static Numbers elementsOf(const ArrayHandle& array) {
    const VORTEN_Array message = test::sent(array);
    return scalarsOf(Class::read(message).elements());
  }
  // As they were committed last.
  static auto elements(const ArrayHandle& array) {
    const VORTEN_Array message = test::parsed(SentArray({array->content(), nullptr}));
    return Class::read(message).elements();
  }
};
TYPED_TEST_SUITE(ContainerCommit, test::ContainerClasses, test::ClassNames);

TYPED_TEST(ContainerCommit, CopiesTheSlotsIntoTheMessage) {
  const auto array = this->create(1, 3);
  this->set(array, 0, 5);
  this->set(array, 2, 7);
  EXPECT_EQ(this->elements(array).size(), 0);
  committed(array);
  EXPECT_EQ(scalarsOf(this->elements(array)), (Numbers{5, 0, 7}));
  EXPECT_TRUE(test::isEmptyDouble(this->elements(array)[1]));
}

TYPED_TEST(ContainerCommit, WritesASlotThatWasReadLikeOneThatWasNot) {
  const auto array = this->create(1, 2);
  owned(hcyGetCell(array.get(), 1));
  owned(hcyGetField(array.get(), 1, "x"));
  committed(array);
  EXPECT_TRUE(test::isEmptyDouble(this->elements(array)[0]));
  EXPECT_TRUE(test::isEmptyDouble(this->elements(array)[1]));
}

TYPED_TEST(ContainerCommit, DropsAndAppendsElementsWithTheSlots) {
  const auto array = this->create(1, 3);
  for (int i = 0; i < 3; ++i) this->set(array, static_cast<std::size_t>(i), i + 1);
  committed(array);
  hcySetN(array.get(), 2);
  EXPECT_EQ(this->elements(array).size(), 3) << "the shape alone does not reach the message's list";
  committed(array);
  EXPECT_EQ(scalarsOf(this->elements(array)), (Numbers{1, 2}));
  hcySetN(array.get(), 4);
  committed(array);
  EXPECT_EQ(scalarsOf(this->elements(array)), (Numbers{1, 2, 0, 0}));
  EXPECT_TRUE(test::isEmptyDouble(this->elements(array)[3]));
}

TYPED_TEST(ContainerCommit, ReplacesAllThatAnElementHeld) {
  const auto array = this->create(1, 1);
  this->set(array, 0, 5);
  committed(array);
  const auto text = owned(hcyCreateString("t"));
  hcySetCell(array.get(), 0, text.get());
  hcySetField(array.get(), 0, "x", text.get());
  committed(array);
  EXPECT_TRUE(this->elements(array)[0].has_qxchar());
  EXPECT_FALSE(this->elements(array)[0].has_int32());
}

TYPED_TEST(ContainerCommit, ShowsWhatWasWrittenThroughASharedElement) {
  const auto array = this->create(1, 1);
  const auto value = wrapped(test::rowOf<INT32_class>({5}));
  hcySetCell(array.get(), 0, value.get());
  hcySetField(array.get(), 0, "x", value.get());
  committed(array);
  *static_cast<std::int32_t*>(hcyGetData(value.get())) = 6;
  committed(array);
  EXPECT_EQ(scalarsOf(this->elements(array)), Numbers{6});
}

TYPED_TEST(ContainerCommit, KeepsTheElementsOfManySlotsThatBecomeMore) {
  for (const std::size_t size : {std::size_t{1}, std::size_t{200}, std::size_t{300}}) {
    const auto array = this->create(1, size);
    this->set(array, size - 1, 5);
    for (const std::size_t more : {size + 1, size + 100, size + 1000}) hcySetN(array.get(), more);
    this->set(array, size + 999, 6);
    const auto elements = this->elementsOf(array);
    EXPECT_EQ(elements[size - 1], 5);
    EXPECT_EQ(elements[size + 999], 6);
    hcySetN(array.get(), size);
    hcySetN(array.get(), size + 1000);
    EXPECT_EQ(this->elementsOf(array)[size + 999], 0) << "gone with its slot";
  }
}

TEST(StructCommit, WritesFieldsElementByElement) {
  const char* const names[] = {"a", "b"};
  const auto array = owned(hcyCreateStructMatrix(2, 1, 2, names));
  for (int i = 0; i < 4; ++i) {
    const auto value = wrapped(test::rowOf<INT32_class>({10 * (i / 2) + i % 2}));
    hcySetField(array.get(), static_cast<std::size_t>(i / 2), names[i % 2], value.get());
  }
  EXPECT_EQ(scalarsOf(committed(array).struct_().elements()), (Numbers{0, 1, 10, 11}));
  hcyAddField(array.get(), "c");
  EXPECT_EQ(scalarsOf(committed(array).struct_().elements()), (Numbers{0, 1, 0, 10, 11, 0}));
  hcyRemoveField(array.get(), 0);
  EXPECT_EQ(scalarsOf(committed(array).struct_().elements()), (Numbers{1, 0, 11, 0}));
  EXPECT_EQ(committed(array).struct_().field_names_size(), 2);
}

TEST(Commit, OfPlainArraysChangesNothing) {
  for (int type = 0; type <= 14; ++type) {
    const auto array = wrapped(test::arrayOf(type, {2, 2}));
    if (hcyIsChar(array.get()) || hcyIsCell(array.get()) || hcyIsStruct(array.get())) continue;
    if (hcyIsInt16(array.get()) || hcyIsUint16(array.get())) continue;
    const std::string before = test::messageOf(array.get()).SerializeAsString();
    EXPECT_EQ(committed(array).SerializeAsString(), before) << type;
  }
}

TEST(Commit, TwiceIsTheSameAsOnce) {
  for (const VORTEN_Array& message :
       {test::complexRowOf<INT16_class>({1, 2}, {3, 4}), test::rowOf<CHAR_class>({'a'}),
        test::cellOf({1, 2}, {5, 6}), test::structOf({1, 1}, {"a", "b"}, {5, 6})}) {
    const auto array = wrapped(message);
    const std::string once = committed(array).SerializeAsString();
    EXPECT_EQ(once, message.SerializeAsString());
    EXPECT_EQ(committed(array).SerializeAsString(), once);
  }
}

TEST(Commit, OfAnElementReachesItsContainer) {
  const auto outer = owned(hcyCreateCellMatrix(1, 1));
  const auto text = owned(hcyCreateString("abc"));
  hcySetCell(outer.get(), 0, text.get());
  hcyGetChars(text.get())[0] = 'x';
  EXPECT_EQ(committed(outer).cell().elements(0).qxchar().elements(0), std::uint32_t{'a'});
  committed(text);
  EXPECT_EQ(committed(outer).cell().elements(0).qxchar().elements(0), std::uint32_t{'x'});
}

}  // namespace
}  // namespace hcy
