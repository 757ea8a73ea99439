// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "arguments.h"
#include "function_error.h"
#include "functions.h"
#include "matrices.h"

namespace hcy::server {
namespace {

// Sums of long doubles, and of deviations from the mean rather than of squares of the data: the
// digits that a large mean would cancel are never lost.
using Sum = long double;
using Column = std::vector<double>;

template <class Vector>
Sum meanOf(const Vector& values) {
  Sum sum = 0;
  for (const double value : values) sum += value;
  return sum / static_cast<Sum>(values.size());
}

struct LinearFit {
  double intercept, slope;
  double interceptError, slopeError;
  double residualDeviation;
  double rSquared;
  double degreesOfFreedom;
};

LinearFit fitLine(const VectorView& x, const VectorView& y) {
  const Sum meanX = meanOf(x), meanY = meanOf(y);
  Sum xx = 0, xy = 0, yy = 0;
  for (Eigen::Index i = 0; i < x.size(); ++i) {
    const Sum dx = x[i] - meanX, dy = y[i] - meanY;
    xx += dx * dx;
    xy += dx * dy;
    yy += dy * dy;
  }
  if (!(xx > 0)) throw FunctionError(kArgumentValue, "The elements of x are all the same.");
  const Sum slope = xy / xx;
  Sum residual = 0;
  for (Eigen::Index i = 0; i < x.size(); ++i) {
    const Sum difference = (y[i] - meanY) - slope * (x[i] - meanX);
    residual += difference * difference;
  }
  const auto count = static_cast<Sum>(x.size());
  const Sum variance = residual / (count - 2);
  return {static_cast<double>(meanY - slope * meanX), static_cast<double>(slope),
          static_cast<double>(std::sqrt(variance * (1 / count + meanX * meanX / xx))),
          static_cast<double>(std::sqrt(variance / xx)), static_cast<double>(std::sqrt(variance)),
          // A constant y leaves nothing to explain.
          yy > 0 ? static_cast<double>(1 - residual / yy) : 1.0, static_cast<double>(count - 2)};
}

// Fills a new struct array, one element after the other, in its order of fields.
class Structs {
 public:
  Structs(Call& call, std::size_t columns, const std::vector<std::string>& fields)
      : call_(call), fieldCount_(fields.size()) {
    call.count((1 + columns * fields.size()) * kArrayMemory);
    array_ = Array::structs({1, columns}, fields);
  }

  void put(const Array& value) {
    hcySetFieldByNumber(array_.get(), next_ / fieldCount_, static_cast<int>(next_ % fieldCount_),
                        value.get());
    ++next_;
  }
  void addToOutputs() { call_.add(std::move(array_)); }

 private:
  Call& call_;
  std::size_t fieldCount_;
  std::size_t next_ = 0;
  Array array_;
};

double standardDeviation(const Column& column, Sum mean) {
  if (column.size() < 2) return 0;
  Sum squares = 0;
  for (const double value : column) squares += (value - mean) * (value - mean);
  return static_cast<double>(std::sqrt(squares / static_cast<Sum>(column.size() - 1)));
}

// Reorders the column, which holds no NaN.
double medianOf(Column& column) {
  const auto middle = column.begin() + static_cast<std::ptrdiff_t>(column.size() / 2);
  std::nth_element(column.begin(), middle, column.end());
  if (column.size() % 2 == 1) return *middle;
  const double below = *std::max_element(column.begin(), middle);
  return static_cast<double>((static_cast<Sum>(below) + *middle) / 2);
}

// Count, mean, standard deviation, minimum, median, maximum; all NaN but the count if the column
// holds one.
void putDescription(Column& column, Structs& structs) {
  const auto put = [&structs](double value) { structs.put(Array(value)); };
  put(static_cast<double>(column.size()));
  if (std::ranges::any_of(column, [](double value) { return std::isnan(value); })) {
    for (int i = 0; i < 5; ++i) put(std::numeric_limits<double>::quiet_NaN());
    return;
  }
  const Sum mean = meanOf(column);
  put(static_cast<double>(mean));
  put(standardDeviation(column, mean));
  put(*std::ranges::min_element(column));
  put(medianOf(column));
  put(*std::ranges::max_element(column));
}

}  // namespace

void statsLinearFit(Call& call) {
  const VectorView x = vectorArgument(call.inputs[0], "x");
  const VectorView y = vectorArgument(call.inputs[1], "y");
  if (x.size() != y.size()) throw FunctionError(kArgumentSize, "x and y differ in length.");
  if (x.size() < 3) throw FunctionError(kArgumentSize, "x and y have fewer than 3 elements.");
  if (!x.allFinite() || !y.allFinite()) {
    throw FunctionError(kArgumentValue, "x or y holds an element that is not finite.");
  }
  const LinearFit fit = fitLine(x, y);
  addMatrix(call, 2, 1) << fit.intercept, fit.slope;
  Structs structs(call, 1,
                  {"standardErrors", "residualStandardDeviation", "rSquared", "degreesOfFreedom"});
  structs.put(Array({fit.interceptError, fit.slopeError}));
  structs.put(Array(fit.residualDeviation));
  structs.put(Array(fit.rSquared));
  structs.put(Array(fit.degreesOfFreedom));
  structs.addToOutputs();
}

void statsDescribe(Call& call) {
  const MatrixView matrix = matrixArgument(call.inputs[0], "A");
  if (matrix.rows() == 0) throw FunctionError(kArgumentSize, "A has no rows.");
  Structs structs(call, static_cast<std::size_t>(matrix.cols()),
                  {"count", "mean", "standardDeviation", "minimum", "median", "maximum"});
  for (Eigen::Index j = 0; j < matrix.cols(); ++j) {
    Column column(matrix.col(j).begin(), matrix.col(j).end());
    putDescription(column, structs);
  }
  structs.addToOutputs();
}

}  // namespace hcy::server
