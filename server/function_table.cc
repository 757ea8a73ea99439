// SPDX-License-Identifier: Apache-2.0

#include "function_table.h"

#include <algorithm>
#include <new>
#include <nlohmann/json.hpp>
#include <utility>

#include "byte_buffer.h"

namespace hcy::server {
namespace {

std::string padded(std::string_view text, std::size_t width) {
  std::string cell(text);
  cell.resize(std::max(width, text.size() + 1), ' ');
  return cell;
}

}  // namespace

void Call::count(std::size_t bytes) {
  used_ += bytes;
  if (used_ > kUncountedMemory && !memory_.growTo(used_ - kUncountedMemory)) throw std::bad_alloc();
}

Array& Call::add(Array array) {
  outputs.push_back({std::move(array)});
  return outputs.back().array;
}

Array& Call::addDoubles(std::size_t rows, std::size_t columns) {
  count(kArrayMemory + sizeof(double) * rows * columns);
  return add(Array::zeros<double>(rows, columns));
}

std::string listOfFunctions(const std::vector<ListedFunction>& functions) {
  std::string page =
      "Functions of this server. POST a VORTEN_Params to the path, get a VORTEN_Result.\n\n" +
      padded("path", 18) + padded("arguments", 54) + "outputs\n";
  for (const ListedFunction& function : functions) {
    page += padded("/" + function.name, 18) + padded(function.arguments, 54);
    page.append(function.outputs).append("\n");
  }
  return page;
}

std::string functionsAsJson(const std::vector<ListedFunction>& functions) {
  auto list = nlohmann::ordered_json::array();
  for (const ListedFunction& function : functions) {
    list.push_back({{"name", function.name},
                    {"arguments", function.arguments},
                    {"summary", function.outputs}});
  }
  // The path of a recorded call need not be UTF-8.
  return nlohmann::ordered_json{{"functions", list}}.dump(
             -1, ' ', false, nlohmann::json::error_handler_t::replace) +
         "\n";
}

}  // namespace hcy::server
