// SPDX-License-Identifier: Apache-2.0
//
// An object that names the class of its array: {"$int16": DATA, "$shape": [M, N]}.

#pragma once

#include <optional>
#include <string_view>

#include "notations/element_types.h"
#include "notations/json_value.h"

namespace hcy::tools {

struct TypedValue {
  std::string_view type;  // without its dollar sign
  const JsonValue* data = nullptr;
  const JsonValue* shape = nullptr;   // if there is one
  const JsonValue* fields = nullptr;  // the same
};

// Whether a name in the object begins with a dollar sign. The fields of a struct that is written
// without its class cannot.
bool isTyped(const JsonObject& object);

// The class of this name if it has numbers or logical elements.
std::optional<hcyClassID> elementClass(std::string_view name);

// Throws BadText if the object is not of this kind.
TypedValue typedValueFrom(const JsonObject& object, std::size_t offset);

// Each makes an array of its kind.
Array typedArray(const TypedValue& value);
Array complexArray(const TypedValue& value, hcyClassID classId);
Array sparseArray(const JsonValue& data, std::optional<hcyClassID> classId, bool isComplex);
Array charArray(const JsonValue& data, const JsonValue* shape);
Array cellArray(const JsonValue& data, const JsonValue* shape);
Array structArray(const JsonValue& data, const JsonValue* shape, const JsonValue* fields);

// A 1-by-1 struct array.
Array structScalar(const JsonValue& value);

// Whether all values are objects without a class that have the same names.
bool areAlike(const JsonList& values);

}  // namespace hcy::tools
