// SPDX-License-Identifier: Apache-2.0

#include "array/array_proxy_builder.h"

#include <array>
#include <typeindex>
#include <typeinfo>

#include "array/narrow_array_proxy.h"
#include "array/struct_cell_array_proxy.h"
#include "support/array_messages.h"
#include "support/exception_checks.h"
#include "support/wrapped_arrays.h"

namespace hcy {
namespace {

using test::expectUnserved;

std::type_index proxyClassOf(int type) {
  switch (type) {
    case VORTEN_Array::UINT16:
      return typeid(VORTEN16BitIntegerArrayProxy<UINT16_class>);
    case VORTEN_Array::INT16:
      return typeid(VORTEN16BitIntegerArrayProxy<INT16_class>);
    case VORTEN_Array::CHAR:
      return typeid(VORTENCharArrayProxy);
    case VORTEN_Array::STRUCT:
      return typeid(VORTENStructCellArrayProxy<STRUCT_class>);
    case VORTEN_Array::CELL:
      return typeid(VORTENStructCellArrayProxy<CELL_class>);
    default:
      return typeid(VORTENArrayProxy);
  }
}

std::unique_ptr<VORTENArrayProxy> created(int type, std::vector<std::uint64_t> dimensions,
                                          bool complex, std::uint64_t count) {
  return ArrayProxyBuilder::create(test::asType(type), dimensions, complex, count);
}

TEST(ProxyBuilder, PicksTheClassOfTheType) {
  for (int type = 0; type <= 14; ++type) {
    const auto over = ArrayProxyBuilder::over(test::contentOf(test::arrayOf(type, {0, 0})));
    const auto fresh = created(type, {0, 0}, false, 0);
    const auto copy = over->clone();
    for (const VORTENArrayProxy* proxy : {over.get(), fresh.get(), copy.get()}) {
      EXPECT_EQ(std::type_index(typeid(*proxy)), proxyClassOf(type)) << type;
    }
  }
}

TEST(ProxyBuilder, SharesTheContentItIsGiven) {
  for (int type = 0; type <= 14; ++type) {
    const ContentPtr content = test::contentOf(test::arrayOf(type, {0, 0}));
    const auto proxy = ArrayProxyBuilder::over(content);
    EXPECT_EQ(proxy->content(), content);
    EXPECT_EQ(content->use_count(), 2U);
    EXPECT_NE(proxy->clone()->content(), content);
  }
}

TEST(ProxyBuilder, RefusesTypesThatAreNotServed) {
  for (const int type : test::unservedTypes) {
    const ContentPtr content = test::contentOf(test::arrayOf(type, {1, 1}));
    expectUnserved([&] { ArrayProxyBuilder::over(content); });
    expectUnserved([&] { test::wrapped(test::arrayOf(type, {1, 1})); });
    expectUnserved([&] { created(type, {1, 1}, false, 1); });
    EXPECT_EQ(content->use_count(), 1U);
  }
}

TEST(CharProxy, HasNoImaginaryData) {
  EXPECT_EQ(created(VORTEN_Array::CHAR, {1, 2}, false, 2)->getImagData(), nullptr);
}

TEST(NewProxy, HasTypeDimensionsAndStorage) {
  const auto proxy = created(VORTEN_Array::SINGLE, {2, 3, 1}, true, 6);
  const VORTEN_Array message = test::messageOf(proxy.get());
  EXPECT_EQ(message.type(), VORTEN_Array::SINGLE);
  EXPECT_EQ(test::numbers(message.dimension()), (test::Numbers{2, 3, 1}));
  EXPECT_EQ(test::numbers(message.single().elements()), test::Numbers(6, 0.0));
  EXPECT_EQ(test::numbers(message.single().imag_elements()), test::Numbers(6, 0.0));
  EXPECT_TRUE(proxy->isComplex());
}

TEST(NewProxy, OfNoElementsHasNoTypedPartAndIsReal) {
  for (int type = 0; type <= 14; ++type) {
    const auto proxy = created(type, {0, 7}, true, 0);
    EXPECT_FALSE(test::hasTypedPart(test::messageOf(proxy.get()))) << type;
    EXPECT_FALSE(proxy->isComplex()) << type;
  }
}

TEST(NewProxy, OfTextIsNeverComplex) {
  EXPECT_FALSE(created(VORTEN_Array::CHAR, {1, 2}, true, 2)->isComplex());
}

TEST(NewProxy, RefusesADimensionOverTheLimit) {
  for (int type = 0; type <= 14; ++type) {
    SCOPED_TRACE(type);
    test::expectPositiveOverflow([&] { created(type, {2147483648, 0}, false, 0); });
  }
}

TEST(NewProxy, TakesItsComplexityFromTheMessageItShares) {
  const VORTEN_Array complex = test::complexRowOf<INT16_class>({1}, {2});
  EXPECT_TRUE(ArrayProxyBuilder::over(test::contentOf(complex))->isComplex());
  EXPECT_TRUE(test::wrapped(complex)->isComplex());
  VORTEN_Array real = test::rowOf<INT16_class>({1});
  real.set_iscomplex(true);
  EXPECT_FALSE(ArrayProxyBuilder::over(test::contentOf(real))->isComplex());
  EXPECT_FALSE(test::wrapped(real)->isComplex());
}

TEST(TextProxy, HasNoImaginaryParts) {
  EXPECT_EQ(created(VORTEN_Array::CHAR, {1, 2}, false, 2)->getImagData(), nullptr);
}

TEST(ContainerProxy, TakesNothingBehindItsSlots) {
  VORTENStructCellArrayProxy<CELL_class> cell(VORTEN_Array::CELL, std::vector<std::uint64_t>{1, 1},
                                              false, 1);
  const auto value = test::wrapped(test::rowOf<DOUBLE_class>({1}));
  cell.setSlot(1, *value);
  EXPECT_EQ(value->content()->use_count(), 1U);
  EXPECT_EQ(cell.slot(1), nullptr);
}

TEST(ProxyElementSize, IsThatOfTheCallersElements) {
  constexpr std::array<std::size_t, 14> sizes = {1, 1, 2, 2, 4, 4, 8, 8, 4, 8, 1, 2, 8, 8};
  for (int type = 0; type < 14; ++type) {
    EXPECT_EQ(created(type, {1, 1}, false, 1)->getElementSize(),
              sizes[static_cast<std::size_t>(type)])
        << type;
  }
}

}  // namespace
}  // namespace hcy
