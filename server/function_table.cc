// SPDX-License-Identifier: Apache-2.0

#include "function_table.h"

#include <utility>

namespace hcy::server {

Array& Call::add(Array array) {
  outputs.push_back({std::move(array)});
  return outputs.back().array;
}

Array& Call::addDoubles(std::size_t rows, std::size_t columns) {
  count(kArrayMemory + sizeof(double) * rows * columns);
  return add(Array::zeros<double>(rows, columns));
}

}  // namespace hcy::server
