// SPDX-License-Identifier: Apache-2.0
//
// The classes that typed tests run over, chosen from the library's list of classes.

#pragma once

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <type_traits>

#include "wire/array_class_traits.h"

namespace hcy::test {

template <class... Classes>
testing::Types<Classes...> typesOf(std::tuple<Classes...>);
template <class Class, bool isChosen>
using OneOrNone = std::conditional_t<isChosen, std::tuple<Class>, std::tuple<>>;
#define HCY_CLASS_IF_CHOSEN(type, name, storage, field, Message, Element, is_numeric) \
  , OneOrNone<type##_class, Condition<type##_class>::value>()
// The classes that a condition holds for, in the order of the list.
template <template <class> class Condition>
using ClassesThat =
    decltype(typesOf(std::tuple_cat(std::tuple<>() HCY_ARRAY_CLASSES(HCY_CLASS_IF_CHOSEN))));
#undef HCY_CLASS_IF_CHOSEN

template <class Class>
struct AreFull : std::bool_constant<!SparseClass<Class>> {};
template <class Class>
struct AreNumeric : std::bool_constant<NumericClass<Class>> {};
template <class Class>
struct AreBytes : std::bool_constant<ByteClass<Class>> {};
template <class Class>
struct AreWidened : std::bool_constant<WidenedClass<Class>> {};
template <class Class>
struct AreIntegers : std::false_type {};
template <RepeatedClass Class>
struct AreIntegers<Class> : std::is_integral<WireElement<Class>> {};
template <class Class>
struct AreContainers : std::bool_constant<ContainerClass<Class>> {};

using FullClasses = ClassesThat<AreFull>;
using NumericClasses = ClassesThat<AreNumeric>;
using ByteClasses = ClassesThat<AreBytes>;
using WidenedClasses = ClassesThat<AreWidened>;
using IntegerClasses = ClassesThat<AreIntegers>;  // in the message
using ContainerClasses = ClassesThat<AreContainers>;

// The names of typed tests: the names of the classes.
struct ClassNames {
  template <class Class>
  static std::string GetName(int) {
    return VORTEN_Array::QXType_Name(Class::type);
  }
};

}  // namespace hcy::test
