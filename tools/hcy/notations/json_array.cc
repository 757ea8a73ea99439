// SPDX-License-Identifier: Apache-2.0

#include "notations/json_array.h"

#include <algorithm>
#include <new>
#include <typeinfo>

#include "notations/exact_integers.h"
#include "notations/json_elements.h"
#include "notations/json_typed_value.h"
#include "text/source_text.h"

namespace hcy::tools {
namespace {

// What nested lists are made of.
enum class Nest { kNothing, kNumbers, kTruths, kMixed };

Nest nestOf(const JsonValue& value) {
  if (value.as<JsonNumber>() != nullptr) return Nest::kNumbers;
  if (value.as<bool>() != nullptr) return Nest::kTruths;
  const auto* const list = value.as<JsonList>();
  if (list == nullptr) return Nest::kMixed;
  Nest nest = Nest::kNothing;
  for (const JsonValue& item : *list) {
    const bool isOfOneKind = item.content.index() == list->front().content.index();
    const Nest inner = isOfOneKind ? nestOf(item) : Nest::kMixed;
    if (nest == Nest::kNothing) nest = inner;
    if (inner == Nest::kMixed || (inner != nest && inner != Nest::kNothing)) return Nest::kMixed;
  }
  return nest;
}

Array listArray(const JsonValue& value) {
  switch (nestOf(value)) {
    case Nest::kNothing:
    case Nest::kNumbers:
      requireExactIntegers(value);
      return arrayOf<double>(nestedElements(value));
    case Nest::kTruths:
      return arrayOf<bool>(nestedElements(value));
    case Nest::kMixed:
      break;
  }
  return areAlike(*value.as<JsonList>()) ? structArray(value, nullptr, nullptr)
                                         : cellArray(value, nullptr);
}

Array plainArray(const JsonValue& value) {
  if (value.as<std::nullptr_t>() != nullptr) return Array::zeros<double>(0, 0);
  if (value.as<bool>() != nullptr) return arrayOf<bool>(nestedElements(value));
  if (value.as<JsonNumber>() != nullptr) {
    requireExactIntegers(value);
    return arrayOf<double>(nestedElements(value));
  }
  if (value.as<std::string>() != nullptr) return charArray(value, nullptr);
  if (value.as<JsonList>() != nullptr) return listArray(value);
  const JsonObject& object = *value.as<JsonObject>();
  return isTyped(object) ? typedArray(typedValueFrom(object, value.offset)) : structScalar(value);
}

}  // namespace

hcyclient::Array arrayFrom(const JsonValue& value) {
  try {
    return plainArray(value);
  } catch (const hcyclient::UsageError& error) {
    throw BadText(value.offset, error.what());
  } catch (const std::bad_cast&) {
    throw BadText(value.offset, "the array would be too large");
  } catch (const std::bad_alloc&) {
    throw BadText(value.offset, "not enough memory for the array");
  }
}

}  // namespace hcy::tools
