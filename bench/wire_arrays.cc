// SPDX-License-Identifier: Apache-2.0

#include "wire_arrays.h"

#include <stdexcept>

namespace hcy::bench {
namespace {

using client::VORTEN_Array;
using client::VORTEN_Params;

void setShape(VORTEN_Array& array, std::size_t rows, std::size_t columns) {
  array.add_dimension(rows);
  array.add_dimension(columns);
}

struct Filler {
  VORTEN_Array& array;

  void operator()(const std::vector<double>& values) const {
    array.set_type(VORTEN_Array::DOUBLE);
    setShape(array, values.size(), 1);
    array.mutable_qxdouble()->mutable_elements()->Add(values.begin(), values.end());
  }
  void operator()(const std::vector<std::int16_t>& values) const {
    array.set_type(VORTEN_Array::INT16);
    setShape(array, values.size(), 1);
    array.mutable_int16()->mutable_elements()->Add(values.begin(), values.end());
  }
  void operator()(const std::vector<std::uint64_t>& values) const {
    array.set_type(VORTEN_Array::UINT64);
    setShape(array, values.size(), 1);
    array.mutable_uint64()->mutable_elements()->Add(values.begin(), values.end());
  }
  void operator()(const std::vector<std::int64_t>& values) const {
    array.set_type(VORTEN_Array::INT64);
    setShape(array, values.size(), 1);
    array.mutable_int64()->mutable_elements()->Add(values.begin(), values.end());
  }
  void operator()(const CellNumbers& cells) const {
    array.set_type(VORTEN_Array::CELL);
    setShape(array, cells.numbers.size(), 1);
    auto& elements = *array.mutable_cell()->mutable_elements();
    elements.Reserve(static_cast<int>(cells.numbers.size()));
    for (const double number : cells.numbers) {
      VORTEN_Array& element = *elements.Add();
      element.set_type(VORTEN_Array::DOUBLE);
      setShape(element, 1, 1);
      element.mutable_qxdouble()->add_elements(number);
    }
  }
  void operator()(const std::u16string& text) const {
    array.set_type(VORTEN_Array::CHAR);
    setShape(array, 1, text.size());
    array.mutable_qxchar()->mutable_elements()->Add(text.begin(), text.end());
  }
};

template <class Number>
std::span<const Number> spanOf(const google::protobuf::RepeatedField<Number>& elements) {
  return {elements.data(), static_cast<std::size_t>(elements.size())};
}

CellNumbers numbersOf(const VORTEN_Array::Cell& cell) {
  CellNumbers cells;
  cells.numbers.reserve(static_cast<std::size_t>(cell.elements_size()));
  for (const VORTEN_Array& element : cell.elements()) {
    if (element.qxdouble().elements_size() != 1) throw std::runtime_error("no 1-by-1 double");
    cells.numbers.push_back(element.qxdouble().elements(0));
  }
  return cells;
}

}  // namespace

VORTEN_Params paramsOf(const Workload& workload) {
  VORTEN_Params params;
  params.set_nargout(1);
  std::visit(Filler{*params.add_rhs()}, workload);
  return params;
}

ArrayReader::ArrayReader(const google::protobuf::RepeatedPtrField<VORTEN_Array>& arrays) {
  if (arrays.size() != 1 || arrays[0].dimension_size() != 2) {
    throw std::runtime_error("not one matrix");
  }
  const VORTEN_Array& array = arrays[0];
  readable_.rows = array.dimension(0);
  readable_.columns = array.dimension(1);
  switch (array.type()) {
    case VORTEN_Array::DOUBLE:
      readable_.elements = spanOf(array.qxdouble().elements());
      break;
    case VORTEN_Array::UINT64:
      readable_.elements = spanOf(array.uint64().elements());
      break;
    case VORTEN_Array::INT64:
      readable_.elements = spanOf(array.int64().elements());
      break;
    case VORTEN_Array::INT16:
      int16s_.assign(array.int16().elements().begin(), array.int16().elements().end());
      readable_.elements = std::span<const std::int16_t>(int16s_);
      break;
    case VORTEN_Array::CELL:
      readable_.elements = numbersOf(array.cell());
      break;
    case VORTEN_Array::CHAR:
      chars_.assign(array.qxchar().elements().begin(), array.qxchar().elements().end());
      readable_.elements = std::u16string_view(chars_);
      break;
    default:
      throw std::runtime_error("an array of another class");
  }
}

}  // namespace hcy::bench
