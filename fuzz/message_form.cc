// SPDX-License-Identifier: Apache-2.0

#include "message_form.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

#include "handle.h"
#include "require.h"
#include "wire/dispatch_on_QXType.h"

namespace hcy::fuzz {
namespace {

constexpr std::uint64_t mostElementsToVisit = 8;

template <class Class, class List>
void keepLowBits(List& list) {
  for (auto& element : list) element = static_cast<typename Class::Element>(element);
}

// Calls use(elements, which) for the one or two lists of elements of a message.
template <class Class, class Use>
void forEachList(const typename Class::Message& part, Use use) {
  use(part.elements(), false);
  if constexpr (NumericClass<Class>) use(part.imag_elements(), true);
}

std::uint64_t countOf(const VORTEN_Array& message) {
  if (message.dimension().empty()) return 0;
  std::uint64_t product = 1;
  for (const std::uint64_t dimension : message.dimension()) {
    if (__builtin_mul_overflow(product, dimension, &product)) product = UINT64_MAX;
  }
  // A factor of zero may follow one that was too much.
  return std::ranges::count(message.dimension(), 0U) != 0 ? 0 : product;
}

template <class Class>
const void* dataOf(const hcyArray* array, bool isImaginary) {
  if constexpr (Class::type == VORTEN_Array::LOGICAL) return hcyGetLogicals(array);
  if constexpr (Class::type == VORTEN_Array::CHAR) return hcyGetChars(array);
  return isImaginary ? hcyGetImagData(array) : hcyGetData(array);
}

// The bits decide: a NaN is not equal to itself.
template <class Element>
bool areSame(Element a, Element b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

template <class Class, class List>
void requireSameElements(const void* data, const List& list, std::uint64_t required) {
  const auto count = static_cast<std::uint64_t>(list.size());
  HCY_REQUIRE((data == nullptr) == (count == 0 || count < required));
  if (data == nullptr) return;
  const auto* element = static_cast<const typename Class::Element*>(data);
  for (const auto expected : list) {
    HCY_REQUIRE(areSame(*element++, static_cast<typename Class::Element>(expected)));
  }
}

void requireSameElement(const Handle& element, const VORTEN_Array* expected, int levels) {
  const bool isServed = expected != nullptr && isServedQXType(expected->type());
  HCY_REQUIRE((element != nullptr) == isServed);
  if (isServed && levels > 0) requireSame(element.get(), *expected, levels - 1);
}

// Null where there is none.
template <class Elements>
const VORTEN_Array* elementOf(const Elements& elements, std::uint64_t index) {
  return index < static_cast<std::uint64_t>(elements.size())
             ? &elements[static_cast<int>(static_cast<std::int64_t>(index))]
             : nullptr;
}

struct ArrayComparison {
  const hcyArray* array;
  const VORTEN_Array& message;
  int levels;

  template <class Class>
  void operator()(Class) const {
    HCY_REQUIRE(hcyGetClassID(array) == static_cast<int>(Class::type));
    forEachList<Class>(Class::read(message), [&](const auto& list, bool isImaginary) {
      requireSameElements<Class>(dataOf<Class>(array, isImaginary), list, countOf(message));
    });
  }

  void operator()(CELL_class) const {
    HCY_REQUIRE(hcyIsCell(array));
    const std::uint64_t count = std::min(countOf(message), mostElementsToVisit);
    for (std::uint64_t i = 0; i < count; ++i) {
      requireSameElement(Handle(hcyGetCell(array, i)), elementOf(message.cell().elements(), i),
                         levels);
    }
  }

  void operator()(STRUCT_class) const {
    HCY_REQUIRE(hcyIsStruct(array));
    const auto& names = message.struct_().field_names();
    const int fields = names.size();
    HCY_REQUIRE(hcyGetNumberOfFields(array) == fields);
    for (int n = 0; n < fields; ++n) {
      const char* const name = names[n].c_str();
      HCY_REQUIRE(std::strcmp(hcyGetFieldNameByNumber(array, n), name) == 0);
      // A name is as long as a string of C is. Of two fields of one name, the first is read.
      const auto found = std::find(names.begin(), names.end(), name);
      const bool isFound = found != names.end();
      HCY_REQUIRE(hcyGetFieldNumber(array, name) ==
                  (isFound ? static_cast<int>(found - names.begin()) : -1));
      requireSameField(n, isFound ? found - names.begin() : -1);
    }
  }

  // The values may lie in a part of another type, which the library does not look at.
  void operator()(SPARSE_class) const {
    HCY_REQUIRE(hcyIsSparse(array));
    const VORTEN_Array::Sparse& sparse = message.sparse();
    const bool isDouble = sparse.type() == VORTEN_Array::Sparse::DOUBLE;
    HCY_REQUIRE(hcyGetClassID(array) == (isDouble ? hcyDOUBLE_CLASS : hcyLOGICAL_CLASS));
    requireSameIndices(hcyGetIr(array), sparse.ir());
    requireSameIndices(hcyGetJc(array), sparse.jc());
    const double* const real = hcyGetPr(array);
    const double* const imaginary = hcyGetPi(array);
    const bool* const logicals = hcyGetLogicals(array);
    HCY_REQUIRE(isDouble ? logicals == nullptr : real == nullptr && imaginary == nullptr);
    for (int i = 0; i < static_cast<int>(hcyGetNzmax(array)); ++i) {
      const auto& doubles = sparse.qxsparsedouble();
      HCY_REQUIRE(real == nullptr || areSame(real[i], doubles.elements(i)));
      HCY_REQUIRE(imaginary == nullptr || areSame(imaginary[i], doubles.imag_elements(i)));
      HCY_REQUIRE(logicals == nullptr || logicals[i] == sparse.logical().elements(i));
    }
  }

 private:
  void requireSameField(int n, std::ptrdiff_t found) const {
    const auto fields = static_cast<std::uint64_t>(message.struct_().field_names_size());
    const std::uint64_t count = std::min(countOf(message), mostElementsToVisit);
    for (std::uint64_t i = 0; i < count; ++i) {
      const VORTEN_Array* const expected =
          found < 0 ? nullptr
                    : elementOf(message.struct_().elements(),
                                i * fields + static_cast<std::uint64_t>(found));
      requireSameElement(Handle(hcyGetFieldByNumber(array, i, n)), expected, levels);
    }
  }

  template <class List>
  static void requireSameIndices(const std::size_t* indices, const List& list) {
    for (int i = 0; indices != nullptr && i < list.size(); ++i) HCY_REQUIRE(indices[i] == list[i]);
  }
};

}  // namespace

void commit(VORTEN_Array& array) {
  dispatch_on_QXType(array.type(), [&]<class Class>(Class) {
    if constexpr (WidenedClass<Class>) {
      keepLowBits<Class>(*Class::write(array).mutable_elements());
      if constexpr (NumericClass<Class>)
        keepLowBits<Class>(*Class::write(array).mutable_imag_elements());
    } else if constexpr (ContainerClass<Class>) {
      Class::write(array);
    }
  });
}

void showParts(VORTEN_Array& array) {
  if (!isServedQXType(array.type())) return;
  dispatch_on_QXType(array.type(), [&]<class Class>(Class) {
    auto& part = Class::write(array);
    if constexpr (ByteClass<Class>) {
      part.mutable_elements();
    } else if constexpr (SparseClass<Class>) {
      if (part.type() == VORTEN_Array::Sparse::DOUBLE) {
        part.mutable_qxsparsedouble();
      } else {
        part.mutable_logical();
      }
    } else if constexpr (ContainerClass<Class>) {
      for (VORTEN_Array& element : *part.mutable_elements()) showParts(element);
    }
  });
}

void requireSame(const hcyArray* array, const VORTEN_Array& message, int levels) {
  HCY_REQUIRE(hcyGetNumberOfDimensions(array) ==
              static_cast<std::size_t>(message.dimension_size()));
  for (int i = 0; i < message.dimension_size(); ++i) {
    HCY_REQUIRE(hcyGetDimensions(array)[i] == message.dimension(i));
  }
  dispatch_on_QXType(message.type(), ArrayComparison{array, message, levels});
}

}  // namespace hcy::fuzz
