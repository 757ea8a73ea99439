// SPDX-License-Identifier: Apache-2.0
#include "calls.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>

#include "http_client.h"

namespace hcy::test {
namespace {

VORTEN_Array newArray(VORTEN_Array::QXType type, const Dimensions& dimensions) {
  VORTEN_Array array;
  array.set_type(type);
  array.mutable_dimension()->Add(dimensions.begin(), dimensions.end());
  return array;
}

int elementsHeld(const VORTEN_Array& array) {
  switch (array.type()) {
    case VORTEN_Array::DOUBLE:
      return array.qxdouble().elements_size();
    case VORTEN_Array::CHAR:
      return array.qxchar().elements_size();
    case VORTEN_Array::CELL:
      return array.cell().elements_size();
    case VORTEN_Array::STRUCT:
      return array.struct_().elements_size() / std::max(1, array.struct_().field_names_size());
    default:
      ADD_FAILURE() << "The server makes no array of type " << array.type();
      return -1;
  }
}

}  // namespace

VORTEN_Array doubles(const Dimensions& dimensions, const std::vector<double>& values) {
  VORTEN_Array array = newArray(VORTEN_Array::DOUBLE, dimensions);
  if (!values.empty()) {
    array.mutable_qxdouble()->mutable_elements()->Add(values.begin(), values.end());
  }
  return array;
}

VORTEN_Array complexDoubles(const Dimensions& dimensions, const std::vector<double>& real,
                            const std::vector<double>& imaginary) {
  VORTEN_Array array = doubles(dimensions, real);
  array.mutable_qxdouble()->mutable_imag_elements()->Add(imaginary.begin(), imaginary.end());
  return array;
}

VORTEN_Array scalar(double value) { return doubles({1, 1}, {value}); }

VORTEN_Array chars(const std::u16string& text) {
  VORTEN_Array array = newArray(VORTEN_Array::CHAR, {1, text.size()});
  array.mutable_qxchar()->mutable_elements()->Add(text.begin(), text.end());
  return array;
}

VORTEN_Array sparse(const Dimensions& dimensions, const std::vector<std::uint64_t>& columnStarts,
                    const std::vector<std::uint64_t>& rows, const std::vector<double>& values) {
  VORTEN_Array array = newArray(VORTEN_Array::SPARSE, dimensions);
  VORTEN_Array::Sparse& held = *array.mutable_sparse();
  held.set_type(VORTEN_Array::Sparse::DOUBLE);
  held.mutable_jc()->Add(columnStarts.begin(), columnStarts.end());
  held.mutable_ir()->Add(rows.begin(), rows.end());
  held.mutable_qxsparsedouble()->mutable_elements()->Add(values.begin(), values.end());
  return array;
}

std::vector<double> realPart(const VORTEN_Array& array) {
  const auto& elements = array.qxdouble().elements();
  return {elements.begin(), elements.end()};
}

std::vector<double> imaginaryPart(const VORTEN_Array& array) {
  const auto& elements = array.qxdouble().imag_elements();
  return {elements.begin(), elements.end()};
}

std::u16string textOf(const VORTEN_Array& array) {
  std::u16string text;
  for (const std::uint32_t unit : array.qxchar().elements()) {
    text.push_back(static_cast<char16_t>(unit));
  }
  return text;
}

Dimensions dimensionsOf(const VORTEN_Array& array) {
  return {array.dimension().begin(), array.dimension().end()};
}

const VORTEN_Array& field(const VORTEN_Array& array, int element, const std::string& name) {
  const auto& names = array.struct_().field_names();
  const auto found = std::ranges::find(names, name);
  const auto index = element * names.size() + static_cast<int>(found - names.begin());
  if (found == names.end() || index >= array.struct_().elements_size()) {
    ADD_FAILURE() << "There is no field " << name << " of element " << element;
    return VORTEN_Array::default_instance();
  }
  return array.struct_().elements(index);
}

std::string serializedParams(int nargout, const std::vector<VORTEN_Array>& arguments) {
  VORTEN_Params params;
  params.set_nargout(nargout);
  for (const VORTEN_Array& argument : arguments) *params.add_rhs() = argument;
  return params.SerializeAsString();
}

VORTEN_Result call(const ServerProcess& server, const std::string& path, int nargout,
                   const std::vector<VORTEN_Array>& arguments) {
  const HttpReply reply = sendRequest(server.url(path), serializedParams(nargout, arguments));
  EXPECT_EQ(reply.status, 200) << reply.failure << reply.body;
  VORTEN_Result result;
  EXPECT_TRUE(result.ParseFromString(reply.body));
  return result;
}

std::vector<VORTEN_Array> outputs(const ServerProcess& server, const std::string& path, int nargout,
                                  const std::vector<VORTEN_Array>& arguments) {
  const VORTEN_Result result = call(server, path, nargout, arguments);
  EXPECT_FALSE(result.has_error()) << result.error().ShortDebugString();
  EXPECT_EQ(result.lhs_size(), nargout);
  std::vector<VORTEN_Array> arrays(result.lhs().begin(), result.lhs().end());
  arrays.resize(static_cast<std::size_t>(nargout));
  return arrays;
}

std::string errorOf(const ServerProcess& server, const std::string& path, int nargout,
                    const std::vector<VORTEN_Array>& arguments) {
  const VORTEN_Result result = call(server, path, nargout, arguments);
  if (!result.has_error()) return "no error";
  EXPECT_EQ(result.lhs_size(), 0);
  EXPECT_NE(result.error().message(), "");
  EXPECT_EQ(result.error().stack_size(), 1);
  if (result.error().stack_size() == 1) {
    EXPECT_EQ("/" + result.error().stack(0).name(), path);
    EXPECT_EQ(result.error().stack(0).file().find('/'), std::string::npos);
    EXPECT_GT(result.error().stack(0).line(), 0);
  }
  return result.error().identifier();
}

void expectWellFormed(const VORTEN_Array& array) {
  ASSERT_TRUE(array.has_type());
  EXPECT_GE(array.dimension_size(), 2);
  EXPECT_FALSE(array.has_memorylayout());
  EXPECT_FALSE(array.has_iscomplex());
  std::uint64_t count = 1;
  for (const std::uint64_t extent : array.dimension()) count *= extent;
  EXPECT_EQ(elementsHeld(array), static_cast<int>(count)) << array.ShortDebugString();
  for (const VORTEN_Array& element : array.cell().elements()) expectWellFormed(element);
  for (const VORTEN_Array& element : array.struct_().elements()) expectWellFormed(element);
}

}  // namespace hcy::test
