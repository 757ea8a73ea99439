// SPDX-License-Identifier: Apache-2.0

#include "functions.h"

namespace hcy::server {

std::vector<Function> ownFunctions() {
  return {
      {"demo/fail", 2, 3, kAnyNumber, demoFail, demoFailSteps, "identifier, message, depth = 1",
       "none: raises that error with depth stack frames"},
      {"demo/sleep", 1, 1, 1, demoSleep, nullptr, "seconds (0 to 3600)", "seconds"},
      {"echo", 0, kAnyNumber, kAnyNumber, echo, nullptr, "any arrays", "the first of them"},
      {"linalg/solve", 2, 2, 1, linalgSolve, linalgSteps, "A (n by n), B (n by k)",
       "X, where A * X = B"},
      {"linalg/svd", 1, 1, 3, linalgSvd, linalgSteps, "A (m by n), k = min(m, n)",
       "singular values | U, S | U (m by k), S (k by k), V (n by k)"},
      {"math/plus", 2, 2, 1, mathPlus, nullptr,
       "A, B (real or complex, equal shape or one a scalar)", "A + B"},
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
}

}  // namespace hcy::server
