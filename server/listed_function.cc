// SPDX-License-Identifier: Apache-2.0

#include "listed_function.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string_view>

namespace hcy::server {
namespace {

std::string padded(std::string_view text, std::size_t width) {
  std::string cell(text);
  cell.resize(std::max(width, text.size() + 1), ' ');
  return cell;
}

}  // namespace

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
