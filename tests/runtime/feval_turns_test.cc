// SPDX-License-Identifier: Apache-2.0
//
// The inputs of one call that hold one another: each is sent as it is when its turn comes, and one
// that is an input twice as it is at its last turn.

#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "runtime/reply_call.h"

namespace hcy::abi {
namespace {

// A class whose handles work on contents of their own, for elements that hold one number.
struct Kind {
  const char* name;
  hcyArray* (*create)();
  void (*set)(hcyArray* array, int number);
  int (*get)(const hcyArray* array);
  int (*read)(const VORTEN_Array& message);
};

std::ostream& operator<<(std::ostream& out, const Kind& kind) { return out << kind.name; }

const char* const kField = "a";

OwnedArray numberArray(int number) { return OwnedArray(hcyCreateDoubleScalar(number)); }

int numberIn(const VORTEN_Array& message) {
  const auto& elements = message.qxdouble().elements();
  return elements.empty() ? 0 : static_cast<int>(elements[0]);
}

template <class Element>
void setElement(hcyArray* array, int number) {
  static_cast<Element*>(hcyGetData(array))[0] = static_cast<Element>(number);
}

const Kind kinds[] = {
    {"int16", [] { return hcyCreateNumericMatrix(1, 1, hcyINT16_CLASS, hcyREAL); },
     setElement<std::int16_t>, [](const hcyArray* a) { return static_cast<int>(hcyGetScalar(a)); },
     [](const VORTEN_Array& message) { return message.int16().elements(0); }},
    {"uint16", [] { return hcyCreateNumericMatrix(1, 1, hcyUINT16_CLASS, hcyREAL); },
     setElement<std::uint16_t>, [](const hcyArray* a) { return static_cast<int>(hcyGetScalar(a)); },
     [](const VORTEN_Array& message) { return static_cast<int>(message.uint16().elements(0)); }},
    {"int16_imaginary", [] { return hcyCreateNumericMatrix(1, 1, hcyINT16_CLASS, hcyCOMPLEX); },
     [](hcyArray* a, int number) {
       static_cast<std::int16_t*>(hcyGetImagData(a))[0] = static_cast<std::int16_t>(number);
     },
     [](const hcyArray* a) { return int{static_cast<std::int16_t*>(hcyGetImagData(a))[0]}; },
     [](const VORTEN_Array& message) { return message.int16().imag_elements(0); }},
    {"text", [] { return hcyCreateString("x"); },
     [](hcyArray* a, int number) { hcyGetChars(a)[0] = static_cast<std::uint16_t>(number); },
     [](const hcyArray* a) { return int{hcyGetChars(a)[0]}; },
     [](const VORTEN_Array& message) { return static_cast<int>(message.qxchar().elements(0)); }},
    {"cell", [] { return hcyCreateCellMatrix(1, 1); },
     [](hcyArray* a, int number) { hcySetCell(a, 0, numberArray(number).get()); },
     [](const hcyArray* a) {
       return static_cast<int>(hcyGetScalar(OwnedArray(hcyGetCell(a, 0)).get()));
     },
     [](const VORTEN_Array& message) { return numberIn(message.cell().elements(0)); }},
    {"structure", [] { return hcyCreateStructMatrix(1, 1, 1, &kField); },
     [](hcyArray* a, int number) { hcySetField(a, 0, kField, numberArray(number).get()); },
     [](const hcyArray* a) {
       return static_cast<int>(hcyGetScalar(OwnedArray(hcyGetField(a, 0, kField)).get()));
     },
     [](const VORTEN_Array& message) { return numberIn(message.struct_().elements(0)); }}};

class FevalTurns : public ReplyCall, public ::testing::WithParamInterface<Kind> {
 protected:
  using Inputs = std::vector<const hcyArray*>;
  using Numbers = std::vector<int>;

  // An element that holds 1 in the container, and 2 since.
  OwnedArray changedElementOf(const OwnedArray& container) const {
    OwnedArray element(GetParam().create());
    GetParam().set(element.get(), 1);
    store(container, element);
    GetParam().set(element.get(), 2);
    return element;
  }

  static void store(const OwnedArray& container, const OwnedArray& value) {
    if (hcyIsCell(container.get())) {
      hcySetCell(container.get(), 0, value.get());
    } else {
      hcySetField(container.get(), 0, kField, value.get());
    }
  }

  static OwnedArray newCell() { return OwnedArray(hcyCreateCellMatrix(1, 1)); }
  static OwnedArray newStruct() { return OwnedArray(hcyCreateStructMatrix(1, 1, 1, &kField)); }
  OwnedArray elementOf(const OwnedArray& container) const {
    return OwnedArray(hcyIsCell(container.get()) ? hcyGetCell(container.get(), 0)
                                                 : hcyGetField(container.get(), 0, kField));
  }

  // What the server gets: of each input the number that it, or the element in it at this depth,
  // holds.
  Numbers sentNumbers(const Inputs& inputs, const std::vector<int>& depths) {
    EXPECT_EQ(feval("", 0, nullptr, inputs), 0);
    Numbers numbers;
    for (int i = 0; i < params.rhs_size(); ++i) {
      const VORTEN_Array* array = &params.rhs(i);
      for (int depth = 0; depth < depths[static_cast<std::size_t>(i)]; ++depth) {
        array = array->has_cell() ? &array->cell().elements(0) : &array->struct_().elements(0);
      }
      numbers.push_back(GetParam().read(*array));
    }
    return numbers;
  }
};
INSTANTIATE_TEST_SUITE_P(OfEachClass, FevalTurns, ::testing::ValuesIn(kinds),
                         [](const auto& kind) { return std::string(kind.param.name); });

TEST_P(FevalTurns, containerBeforeItsElement) {
  for (const OwnedArray& container : {newCell(), newStruct()}) {
    const OwnedArray element = changedElementOf(container);
    EXPECT_EQ(sentNumbers({container.get(), element.get()}, {1, 0}), (Numbers{1, 2}));
    EXPECT_EQ(GetParam().get(elementOf(container).get()), 1) << "sending changes nothing";
    EXPECT_EQ(GetParam().get(element.get()), 2);
  }
}

TEST_P(FevalTurns, containerBehindItsElement) {
  for (const OwnedArray& container : {newCell(), newStruct()}) {
    const OwnedArray element = changedElementOf(container);
    EXPECT_EQ(sentNumbers({element.get(), container.get()}, {0, 1}), (Numbers{2, 2}));
    EXPECT_EQ(GetParam().get(elementOf(container).get()), 1) << "sending changes nothing";
  }
}

TEST_P(FevalTurns, containerOnBothSidesOfItsElement) {
  for (const OwnedArray& container : {newCell(), newStruct()}) {
    const OwnedArray element = changedElementOf(container);
    EXPECT_EQ(sentNumbers({container.get(), element.get(), container.get()}, {1, 0, 1}),
              (Numbers{2, 2, 2}));
    EXPECT_EQ(GetParam().get(elementOf(container).get()), 1) << "sending changes nothing";
  }
}

TEST_P(FevalTurns, elementOnBothSidesOfItsContainer) {
  for (const OwnedArray& container : {newCell(), newStruct()}) {
    const OwnedArray element = changedElementOf(container);
    EXPECT_EQ(sentNumbers({element.get(), container.get(), element.get()}, {0, 1, 0}),
              (Numbers{2, 2, 2}));
  }
}

// The handle got from the container still has what was stored.
TEST_P(FevalTurns, twoHandlesOverOneElement) {
  for (const OwnedArray& container : {newCell(), newStruct()}) {
    const OwnedArray element = changedElementOf(container);
    const OwnedArray other = elementOf(container);
    const hcyArray* const c = container.get();
    EXPECT_EQ(sentNumbers({element.get(), other.get(), c}, {0, 0, 1}), (Numbers{1, 1, 1}));
    EXPECT_EQ(sentNumbers({other.get(), element.get(), c}, {0, 0, 1}), (Numbers{2, 2, 2}));
    EXPECT_EQ(sentNumbers({element.get(), c, other.get()}, {0, 1, 0}), (Numbers{1, 2, 1}));
    EXPECT_EQ(sentNumbers({other.get(), c, element.get(), c}, {0, 1, 0, 1}), (Numbers{2, 2, 2, 2}));
    GetParam().set(other.get(), 3);
    EXPECT_EQ(sentNumbers({element.get(), other.get(), c}, {0, 0, 1}), (Numbers{3, 3, 3}));
    EXPECT_EQ(sentNumbers({c}, {1}), (Numbers{1}));
    EXPECT_EQ(GetParam().get(element.get()), 2);
    EXPECT_EQ(GetParam().get(other.get()), 3);
  }
}

TEST_P(FevalTurns, containerOfAContainer) {
  for (const OwnedArray& outer : {newCell(), newStruct()}) {
    const OwnedArray inner = newCell();
    const OwnedArray element = changedElementOf(inner);
    store(outer, inner);
    const hcyArray* const o = outer.get();
    const hcyArray* const i = inner.get();
    const hcyArray* const e = element.get();
    EXPECT_EQ(sentNumbers({o, i, e}, {2, 1, 0}), (Numbers{1, 1, 2}));
    EXPECT_EQ(sentNumbers({e, i, o}, {0, 1, 2}), (Numbers{2, 2, 2}));
    EXPECT_EQ(sentNumbers({e, o}, {0, 2}), (Numbers{2, 1})) << "the inner one has no turn";
    EXPECT_EQ(sentNumbers({o, e, o}, {2, 0, 2}), (Numbers{1, 2, 1}));
    EXPECT_EQ(sentNumbers({i, e, o}, {1, 0, 2}), (Numbers{1, 2, 1}));
    EXPECT_EQ(sentNumbers({i, e, i, o}, {1, 0, 1, 2}), (Numbers{2, 2, 2, 2}));
    EXPECT_EQ(sentNumbers({o, e, i, o}, {2, 0, 1, 2}), (Numbers{2, 2, 2, 2}));
    EXPECT_EQ(sentNumbers({o}, {2}), (Numbers{1}));
    EXPECT_EQ(GetParam().get(elementOf(elementOf(outer)).get()), 1);
  }
}

TEST_P(FevalTurns, oneElementOfTwoContainers) {
  const OwnedArray first = newCell();
  const OwnedArray second = newStruct();
  const OwnedArray element = changedElementOf(first);
  GetParam().set(element.get(), 1);
  store(second, element);
  GetParam().set(element.get(), 2);
  const hcyArray* const e = element.get();
  EXPECT_EQ(sentNumbers({first.get(), e, second.get()}, {1, 0, 1}), (Numbers{1, 2, 2}));
  EXPECT_EQ(sentNumbers({second.get(), e, first.get()}, {1, 0, 1}), (Numbers{1, 2, 2}));
  EXPECT_EQ(sentNumbers({first.get(), second.get()}, {1, 1}), (Numbers{1, 1}));
}

}  // namespace
}  // namespace hcy::abi
