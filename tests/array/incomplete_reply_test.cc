// SPDX-License-Identifier: Apache-2.0
//
// Arrays of a reply whose storage holds fewer elements than their dimensions say, however the
// program comes to them.

#include <cstdint>
#include <optional>
#include <typeinfo>

#include "support/ways_to_arrays.h"

namespace hcy {
namespace {

using test::Numbers;
using test::numbers;

constexpr int kElements = 4;

template <class Class>
struct HoldNumbers : std::bool_constant<!SparseClass<Class> && !ContainerClass<Class>> {};
using NumberClasses = test::ClassesThat<HoldNumbers>;

const void* realParts(const ArrayHandle& array) {
  if (hcyIsLogical(array.get())) return hcyGetLogicals(array.get());
  if (hcyIsChar(array.get())) return hcyGetChars(array.get());
  const void* const data = hcyGetData(array.get());
  EXPECT_EQ(hcyGetPr(array.get()), hcyIsDouble(array.get()) ? data : nullptr);
  return data;
}
const void* imaginaryParts(const ArrayHandle& array) {
  const void* const data = hcyGetImagData(array.get());
  EXPECT_EQ(hcyGetPi(array.get()), hcyIsDouble(array.get()) ? data : nullptr);
  return data;
}

// A 1-by-4 array with the first of its real and imaginary parts, all of them 1.
template <class Class>
VORTEN_Array rowWith(int real, int imaginary) {
  VORTEN_Array array = test::arrayOf(Class::type, {1, kElements});
  if (real == 0 && imaginary == 0) return array;
  auto& part = Class::write(array);
  for (int i = 0; i < real; ++i) test::assign(part.mutable_elements(), {1});
  if constexpr (NumericClass<Class>) {
    for (int i = 0; i < imaginary; ++i) test::assign(part.mutable_imag_elements(), {1});
  }
  return array;
}

// What is sent of it again. Classes whose elements are kept outside the message, and cells and
// structs, are sent with their part even where it is empty.
template <class Class>
std::string sentFor(VORTEN_Array message) {
  if (WidenedClass<Class> || ContainerClass<Class>) Class::write(message);
  return message.SerializeAsString();
}

Numbers completed(int count) {
  Numbers values(kElements, 0.0);
  std::fill_n(values.begin(), count, 1.0);
  return values;
}

template <class Class>
class IncompleteReply : public testing::Test {
 protected:
  // Calls use(array, message, real, imaginary) for each number of parts that may have arrived, and
  // each way to the array.
  template <class Use>
  static void forEachArray(Use use) {
    for (const auto& [name, way] : test::waysFromReplies()) {
      for (int real = 0; real <= kElements; ++real) {
        for (int imaginary = 0; imaginary <= (NumericClass<Class> ? kElements : 0); ++imaginary) {
          SCOPED_TRACE(name + ", real " + std::to_string(real) + ", imaginary " +
                       std::to_string(imaginary));
          const VORTEN_Array message = rowWith<Class>(real, imaginary);
          use(way(message), message, real, imaginary);
        }
      }
    }
  }

  static void expectCompleted(const ArrayHandle& array, int real, int imaginary) {
    EXPECT_NE(realParts(array), nullptr);
    EXPECT_EQ(imaginaryParts(array) != nullptr, imaginary != 0);
    const VORTEN_Array all = test::committed(array);
    const auto& part = Class::read(all);
    EXPECT_EQ(numbers(part.elements()), completed(real));
    if constexpr (NumericClass<Class>) {
      EXPECT_EQ(numbers(part.imag_elements()), imaginary == 0 ? Numbers() : completed(imaginary));
    }
  }
};
TYPED_TEST_SUITE(IncompleteReply, NumberClasses, test::ClassNames);

TYPED_TEST(IncompleteReply, HandsOutOnlyWhatIsThereWhole) {
  this->forEachArray([](const ArrayHandle& array, const VORTEN_Array&, int real, int imaginary) {
    EXPECT_EQ(realParts(array) != nullptr, real == kElements);
    EXPECT_EQ(imaginaryParts(array) != nullptr, imaginary == kElements);
  });
}

TYPED_TEST(IncompleteReply, IsDescribedByItsDimensionsAndFirstElement) {
  this->forEachArray([](const ArrayHandle& array, const VORTEN_Array&, int real, int imaginary) {
    EXPECT_EQ(hcyGetClassID(array.get()), static_cast<int>(TypeParam::type));
    EXPECT_STREQ(hcyGetClassName(array.get()), TypeParam::name);
    EXPECT_TRUE(hcyIsClass(array.get(), TypeParam::name));
    EXPECT_EQ(hcyIsNumeric(array.get()), NumericClass<TypeParam>);
    EXPECT_EQ(hcyGetElementSize(array.get()), sizeof(typename TypeParam::Element));
    EXPECT_EQ(hcyGetM(array.get()), 1U);
    EXPECT_EQ(hcyGetN(array.get()), 4U);
    EXPECT_EQ(hcyGetNumberOfElements(array.get()), 4U);
    EXPECT_FALSE(hcyIsEmpty(array.get()));
    EXPECT_FALSE(hcyIsSparse(array.get()));
    EXPECT_EQ(hcyIsComplex(array.get()), imaginary != 0);
    EXPECT_EQ(hcyGetScalar(array.get()), real != 0 ? 1.0 : 0.0);
  });
}

TYPED_TEST(IncompleteReply, IsSentAgainAsItArrived) {
  this->forEachArray([](const ArrayHandle& array, const VORTEN_Array& message, int, int) {
    EXPECT_EQ(test::sent(array).SerializeAsString(), sentFor<TypeParam>(message));
    // Looking at it changes nothing.
    realParts(array);
    imaginaryParts(array);
    hcyGetScalar(array.get());
    EXPECT_EQ(test::sent(array).SerializeAsString(), sentFor<TypeParam>(message));
  });
}

TYPED_TEST(IncompleteReply, IsSentInItsContainerAsItArrived) {
  for (int real = 0; real <= kElements; ++real) {
    const VORTEN_Array message = rowWith<TypeParam>(real, 0);
    for (const VORTEN_Array& outer :
         {test::inCell(message), test::inCell(test::inStruct(message))}) {
      const ArrayHandle container = test::wrapped(outer);
      const ArrayHandle element = test::onlyElementOf(container);
      realParts(element);
      EXPECT_EQ(test::sent(container).SerializeAsString(), outer.SerializeAsString());
      EXPECT_EQ(test::committed(container).SerializeAsString(), outer.SerializeAsString());
      EXPECT_EQ(test::sent(test::duplicateOf(container)).SerializeAsString(),
                outer.SerializeAsString());
    }
  }
}

TYPED_TEST(IncompleteReply, IsCompletedWithZerosBySettingItsRows) {
  this->forEachArray(
      [this](const ArrayHandle& array, const VORTEN_Array&, int real, int imaginary) {
        hcySetM(array.get(), 1);
        this->expectCompleted(array, real, imaginary);
      });
}

TYPED_TEST(IncompleteReply, IsCompletedWithZerosBySettingItsColumns) {
  this->forEachArray(
      [this](const ArrayHandle& array, const VORTEN_Array&, int real, int imaginary) {
        hcySetN(array.get(), 4);
        this->expectCompleted(array, real, imaginary);
      });
}

TYPED_TEST(IncompleteReply, IsCompletedWithZerosBySettingItsDimensions) {
  this->forEachArray(
      [this](const ArrayHandle& array, const VORTEN_Array&, int real, int imaginary) {
        const std::size_t dims[] = {2, 2};
        EXPECT_EQ(hcySetDimensions(array.get(), dims, 2), 0);
        this->expectCompleted(array, real, imaginary);
      });
}

TYPED_TEST(IncompleteReply, StaysCompletedInACopyAndInAContainer) {
  this->forEachArray(
      [this](const ArrayHandle& array, const VORTEN_Array&, int real, int imaginary) {
        hcySetM(array.get(), 1);
        this->expectCompleted(test::duplicateOf(array), real, imaginary);
        this->expectCompleted(test::onlyElementOf(test::newCellWith(array)), real, imaginary);
      });
}

// Refused dimensions stay set, and there is less storage for them than ever.
TYPED_TEST(IncompleteReply, HandsOutNothingForDimensionsThatAreTooLarge) {
  this->forEachArray([](const ArrayHandle& array, const VORTEN_Array&, int, int) {
    EXPECT_THROW(hcySetM(array.get(), std::size_t{1} << 31), std::bad_cast);
    EXPECT_EQ(realParts(array), nullptr);
    EXPECT_EQ(imaginaryParts(array), nullptr);
  });
}

TEST(IncompleteText, IsReadAsFarAsItArrived) {
  for (const auto& [name, way] : test::waysFromReplies()) {
    for (int units = 0; units <= kElements; ++units) {
      SCOPED_TRACE(name + ", " + std::to_string(units));
      VORTEN_Array message = test::arrayOf(VORTEN_Array::CHAR, {1, kElements});
      for (int i = 0; i < units; ++i) message.mutable_qxchar()->add_elements('a');
      const ArrayHandle array = way(message);
      const std::string text(static_cast<std::size_t>(units), 'a');
      std::string buffer(8, '#');
      EXPECT_EQ(hcyGetString(array.get(), buffer.data(), 8), 0);
      EXPECT_EQ(buffer, text + std::string(5 - text.size(), '\0') + "###");
      const std::unique_ptr<char, void (*)(void*)> utf8(hcyArrayToString(array.get()), hcyFree);
      ASSERT_EQ(utf8 == nullptr, units == 0);
      if (utf8) {
        EXPECT_EQ(utf8.get(), text);
      }
    }
  }
}

TEST(IncompleteLogicalScalar, IsNotTrue) {
  const VORTEN_Array message = test::arrayOf(VORTEN_Array::LOGICAL, {1, 1});
  for (const auto& [name, way] : test::waysFromReplies()) {
    SCOPED_TRACE(name);
    const ArrayHandle array = way(message);
    EXPECT_TRUE(hcyIsLogicalScalar(array.get()));
    EXPECT_FALSE(hcyIsLogicalScalarTrue(array.get()));
    hcySetM(array.get(), 1);
    EXPECT_FALSE(hcyIsLogicalScalarTrue(array.get()));
    ASSERT_NE(hcyGetLogicals(array.get()), nullptr);
    *hcyGetLogicals(array.get()) = true;
    EXPECT_TRUE(hcyIsLogicalScalarTrue(array.get()));
  }
}

template <class Class>
class IncompleteContainerReply : public testing::Test {
 protected:
  static ArrayHandle at(const ArrayHandle& array, std::size_t index) {
    return test::owned(hcyIsCell(array.get()) ? hcyGetCell(array.get(), index)
                                              : hcyGetField(array.get(), index, "a"));
  }
  static VORTEN_Array withElements(int count) {
    VORTEN_Array array = test::arrayOf(Class::type, {1, kElements});
    if constexpr (Class::type == VORTEN_Array::STRUCT) {
      array.mutable_struct_()->add_field_names("a");
    }
    for (int i = 0; i < count; ++i) {
      *Class::write(array).add_elements() = test::rowOf<INT16_class>({i + 5});
    }
    return array;
  }
};
TYPED_TEST_SUITE(IncompleteContainerReply, test::ContainerClasses, test::ClassNames);

TYPED_TEST(IncompleteContainerReply, HasNullForWhatIsMissingUntilItIsCompleted) {
  for (const auto& [name, way] : test::waysFromReplies()) {
    for (int count = 0; count <= kElements; ++count) {
      SCOPED_TRACE(name + ", " + std::to_string(count));
      const VORTEN_Array message = this->withElements(count);
      const ArrayHandle array = way(message);
      for (int i = 0; i < kElements; ++i) {
        const ArrayHandle element = this->at(array, static_cast<std::size_t>(i));
        ASSERT_EQ(element != nullptr, i < count) << i;
        if (element) {
          EXPECT_TRUE(hcyIsInt16(element.get()));
          EXPECT_EQ(static_cast<std::int16_t*>(hcyGetData(element.get()))[0], i + 5);
        }
      }
      EXPECT_EQ(test::sent(array).SerializeAsString(), sentFor<TypeParam>(message));
      hcySetN(array.get(), kElements);
      for (int i = 0; i < kElements; ++i) {
        const ArrayHandle element = this->at(array, static_cast<std::size_t>(i));
        ASSERT_NE(element, nullptr) << i;
        EXPECT_EQ(hcyIsInt16(element.get()), i < count) << i;
        EXPECT_EQ(hcyGetScalar(element.get()), i < count ? i + 5 : 0) << i;
      }
    }
  }
}

// What the program has made is its own affair, whatever its dimensions say.
template <class Class>
class MadeArray : public testing::Test {
 protected:
  static ArrayHandle make() {
    const std::size_t dims[] = {1, kElements};
    hcyArray* made = nullptr;
    if constexpr (NumericClass<Class>) {
      made = hcyCreateNumericArray(2, dims, static_cast<hcyClassID>(Class::type), hcyCOMPLEX);
    } else if constexpr (Class::type == VORTEN_Array::LOGICAL) {
      made = hcyCreateLogicalArray(2, dims);
    } else {
      made = hcyCreateCharArray(2, dims);
    }
    for (int i = 0; i < kElements; ++i) elements(made)[i] = static_cast<Element>(1);
    return test::owned(made);
  }

  using Element = typename Class::Element;
  static Element* elements(const hcyArray* array) {
    if constexpr (NumericClass<Class>) return static_cast<Element*>(hcyGetData(array));
    if constexpr (Class::type == VORTEN_Array::LOGICAL) return hcyGetLogicals(array);
    if constexpr (Class::type == VORTEN_Array::CHAR) {
      return reinterpret_cast<Element*>(hcyGetChars(array));
    }
  }

  static void expectElements(const ArrayHandle& array, int ones, int count) {
    const Element* const first = elements(array.get());
    ASSERT_NE(first, nullptr);
    for (int i = 0; i < count; ++i) EXPECT_EQ(first[i], static_cast<Element>(i < ones)) << i;
    EXPECT_EQ(hcyGetImagData(array.get()) != nullptr, NumericClass<Class>);
  }
};
TYPED_TEST_SUITE(MadeArray, NumberClasses, test::ClassNames);

TYPED_TEST(MadeArray, IsReadableInEverySize) {
  for (const auto& [name, detour] : test::detours()) {
    SCOPED_TRACE(name);
    const ArrayHandle array = detour(this->make());
    this->expectElements(array, 4, 4);
    hcySetN(array.get(), 6);
    this->expectElements(array, 4, 6);
    hcySetN(array.get(), 2);
    this->expectElements(array, 2, 2);
  }
}

TYPED_TEST(MadeArray, StaysReadableWhenItCannotGrow) {
  for (const auto& [name, detour] : test::detours()) {
    SCOPED_TRACE(name);
    const ArrayHandle array = detour(this->make());
    EXPECT_THROW(hcySetM(array.get(), std::size_t{1} << 31), std::bad_cast);
    EXPECT_EQ(hcyGetM(array.get()), std::size_t{1} << 31);
    this->expectElements(array, 4, 4);
    this->expectElements(test::duplicateOf(array), 4, 4);
    this->expectElements(test::onlyElementOf(test::newStructWith(array)), 4, 4);
  }
}

}  // namespace
}  // namespace hcy
