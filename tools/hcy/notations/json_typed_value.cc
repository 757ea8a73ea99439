// SPDX-License-Identifier: Apache-2.0

#include "notations/json_typed_value.h"

#include <algorithm>
#include <array>
#include <complex>
#include <string>

#include "notations/exact_integers.h"
#include "notations/json_array.h"
#include "notations/json_elements.h"
#include "text/source_text.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

// In the order of their numbers.
constexpr std::array<std::string_view, 14> kClasses = {
    "uint8", "int8",   "uint16", "int16",   "uint32", "int32",  "uint64",
    "int64", "single", "double", "logical", "char",   "struct", "cell"};

// A complex array of elements T.
template <class T>
Array complexOf(const Elements& real, const Elements& imaginary) {
  Array array = Array::zeros<std::complex<T>>(real.shape);
  const auto realSpan = array.span<T>();
  const auto imaginarySpan = array.imaginary<T>();
  for (std::size_t i = 0; i < realSpan.size(); ++i) {
    realSpan[i] = elementFrom<T>(*real.values[i]);
    imaginarySpan[i] = elementFrom<T>(*imaginary.values[i]);
  }
  return array;
}

// A complex or sparse value without another class.
Array doubleArray(const TypedValue& value) {
  const bool isSparse = value.type == "sparse";
  if (isSparse && value.shape != nullptr) {
    throw BadText(value.shape->offset,
                  "a sparse value has its shape in rows and cols; remove $shape");
  }
  Array array = isSparse ? sparseArray(*value.data, std::nullopt, false)
                         : complexArray(value, hcyDOUBLE_CLASS);
  requireExactIntegers(*value.data);
  return array;
}

// A complex or sparse value with another class before it.
Array classOf(const TypedValue& outer, hcyClassID classId, const JsonObject& data) {
  TypedValue inner = typedValueFrom(data, outer.data->offset);
  if (inner.type == "sparse" && outer.shape == nullptr)
    return sparseArray(*inner.data, classId, false);
  if (inner.type != "complex") {
    throw BadText(outer.data->offset, "only complex and sparse can follow another class");
  }
  if (outer.shape != nullptr) {
    if (inner.shape != nullptr) throw BadText(inner.shape->offset, "$shape is given twice");
    inner.shape = outer.shape;
  }
  return complexArray(inner, classId);
}

Array fullArray(const TypedValue& value, hcyClassID classId) {
  if (const auto* const object = value.data->as<JsonObject>()) {
    return classOf(value, classId, *object);
  }
  if (classId == hcyCHAR_CLASS) return charArray(*value.data, value.shape);
  return withElementType(classId, [&value](auto type) {
    return arrayOf<typename decltype(type)::type>(elementsOf(*value.data, value.shape));
  });
}

// What to write in place of a word that is not a class.
std::string classesInstead(std::string_view word) {
  if (word == "float64") return "; inside JSON, write double";
  if (word == "float32") return "; inside JSON, write single";
  if (word == "bool") return "; inside JSON, write logical";
  std::string all = "; the classes are";
  for (const std::string_view name : typeNames()) all.append(" ").append(name);
  return all;
}

const JsonValue* memberOf(const JsonObject& object, std::string_view name) {
  const auto found = std::find_if(object.begin(), object.end(),
                                  [name](const JsonMember& member) { return member.name == name; });
  return found == object.end() ? nullptr : &found->value;
}

}  // namespace

const std::vector<std::string_view>& typeNames() {
  static const std::vector<std::string_view> names = [] {
    std::vector<std::string_view> all(kClasses.begin(), kClasses.end());
    all.insert(all.end(), {"complex", "sparse"});
    return all;
  }();
  return names;
}

std::optional<hcyClassID> elementClass(std::string_view name) {
  const auto found = std::find(kClasses.begin(), kClasses.end(), name);
  const auto number = found - kClasses.begin();
  return number < hcyCHAR_CLASS ? std::optional(static_cast<hcyClassID>(number)) : std::nullopt;
}

bool isTyped(const JsonObject& object) {
  return std::any_of(object.begin(), object.end(),
                     [](const JsonMember& member) { return member.name.starts_with('$'); });
}

TypedValue typedValueFrom(const JsonObject& object, std::size_t offset) {
  TypedValue value;
  for (const JsonMember& member : object) {
    const std::string_view name = member.name;
    const auto type = std::find(typeNames().begin(), typeNames().end(),
                                name.starts_with('$') ? name.substr(1) : std::string_view());
    if (name == "$shape") {
      value.shape = &member.value;
    } else if (name == "$fields") {
      value.fields = &member.value;
    } else if (type == typeNames().end() && name.starts_with('$')) {
      throw BadText(member.offset, "there is no class " + printable(name.substr(1)) +
                                       classesInstead(name.substr(1)));
    } else if (type == typeNames().end()) {
      throw BadText(member.offset, "an object with a class cannot have other members");
    } else if (value.data != nullptr) {
      throw BadText(member.offset, "an object cannot have two classes");
    } else {
      value.type = *type;
      value.data = &member.value;
    }
  }
  if (value.data == nullptr) {
    throw BadText(offset, "$shape and $fields need a class beside them, such as $double");
  }
  if (value.fields != nullptr && value.type != "struct") {
    throw BadText(value.fields->offset, "only a struct can have $fields");
  }
  return value;
}

Array typedArray(const TypedValue& value) {
  if (value.type == "complex" || value.type == "sparse") return doubleArray(value);
  if (value.type == "cell") return cellArray(*value.data, value.shape);
  if (value.type == "struct") return structArray(*value.data, value.shape, value.fields);
  const auto found = std::find(kClasses.begin(), kClasses.end(), value.type);
  return fullArray(value, static_cast<hcyClassID>(found - kClasses.begin()));
}

Array complexArray(const TypedValue& value, hcyClassID classId) {
  const auto* const object = value.data->as<JsonObject>();
  if (object != nullptr && isTyped(*object) && value.shape == nullptr) {
    const TypedValue inner = typedValueFrom(*object, value.data->offset);
    if (inner.type == "sparse" && inner.shape == nullptr) {
      return sparseArray(*inner.data, classId, true);
    }
  }
  const JsonValue* const real = object == nullptr ? nullptr : memberOf(*object, "re");
  const JsonValue* const imaginary = object == nullptr ? nullptr : memberOf(*object, "im");
  if (real == nullptr || imaginary == nullptr || object->size() != 2) {
    throw BadText(value.data->offset, R"(a complex value must have the form {"re": …, "im": …})");
  }
  const Elements realElements = elementsOf(*real, value.shape);
  const Elements imaginaryElements = elementsOf(*imaginary, value.shape);
  if (realElements.shape != imaginaryElements.shape) {
    throw BadText(imaginary->offset, "re and im must have the same shape");
  }
  return withElementType(classId, [&](auto type) -> Array {
    using T = typename decltype(type)::type;
    if constexpr (isNumber<T>) {
      return complexOf<T>(realElements, imaginaryElements);
    } else {
      throw BadText(value.data->offset, "only numbers can be complex");
    }
  });
}

}  // namespace hcy::tools
