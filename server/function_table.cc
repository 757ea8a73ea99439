// SPDX-License-Identifier: Apache-2.0

#include "function_table.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "functions.h"

namespace hcy::server {
namespace {

constexpr Function table[] = {
    {"demo/fail", 2, 3, kAnyNumber, demoFail, demoFailSteps, "identifier, message, depth = 1",
     "none: raises that error with depth stack frames"},
    {"demo/sleep", 1, 1, 1, demoSleep, nullptr, "seconds (0 to 3600)", "seconds"},
    {"echo", 0, kAnyNumber, kAnyNumber, echo, nullptr, "any arrays", "the first of them"},
    {"linalg/solve", 2, 2, 1, linalgSolve, linalgSteps, "A (n by n), B (n by k)",
     "X, where A * X = B"},
    {"linalg/svd", 1, 1, 3, linalgSvd, linalgSteps, "A (m by n), k = min(m, n)",
     "singular values | U, S | U (m by k), S (k by k), V (n by k)"},
    {"math/plus", 2, 2, 1, mathPlus, nullptr, "A, B (real or complex, equal shape or one a scalar)",
     "A + B"},
    {"sparse/multiply", 2, 2, 1, sparseMultiply, sparseMultiplySteps,
     "A (sparse, m by n), B (n by k)", "A * B (not sparse)"},
    {"stats/describe", 1, 1, 1, statsDescribe, nullptr, "A (m by n)",
     "1-by-n struct: count, mean, standardDeviation, minimum, median, maximum"},
    {"stats/linear_fit", 2, 2, 2, statsLinearFit, nullptr,
     "x, y (vectors of equal length, 3 or more)",
     "[b0; b1], struct: standardErrors, residualStandardDeviation, rSquared, degreesOfFreedom"},
    {"text/split", 1, 2, 1, textSplit, nullptr, "text, delimiter = ' '",
     "1-by-n cell of the pieces"},
    {"text/upper", 1, 1, 1, textUpper, nullptr, "text (any shape)", "the text in upper case"},
};

std::string padded(std::string_view text, std::size_t width) {
  std::string cell(text);
  cell.resize(std::max(width, text.size() + 1), ' ');
  return cell;
}

}  // namespace

std::span<const Function> functions() { return table; }

const Function* findFunction(std::string_view path) {
  const Function* found = std::ranges::find(table, path, &Function::path);
  return found == std::end(table) ? nullptr : found;
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
