// SPDX-License-Identifier: Apache-2.0
//
// Solves A x = b for a sparse A by conjugate gradients; the server multiplies by A.
//
// A is the second difference on a grid, b is all ones, and so the solution is known:
// x[i] = (i + 1) (points - i) / 2.
//
// Usage: sparse_solve SERVER_URL

#include <cmath>
#include <cstdio>
#include <hcy/hcyclient.hpp>
#include <iostream>
#include <numeric>
#include <stdexcept>
#include <string>
#include <vector>

using hcyclient::Array;

namespace {

constexpr std::size_t points = 50;
using Vector = std::vector<double>;

// The tridiagonal matrix with 2 on the diagonal and -1 next to it.
Array secondDifference() {
  std::vector<hcyclient::Entry<double>> entries;
  for (std::size_t i = 0; i < points; ++i) {
    entries.push_back({i, i, 2.0});
    if (i > 0) entries.push_back({i, i - 1, -1.0});
    if (i + 1 < points) entries.push_back({i, i + 1, -1.0});
  }
  return Array::sparse<double>(points, points, entries);
}

double square(const Vector& a) { return std::inner_product(a.begin(), a.end(), a.begin(), 0.0); }

Vector solve(hcyclient::Context& context, const std::string& url) {
  const Array matrix = secondDifference();
  Vector x(points), residual(points, 1.0);
  // Sent in every step: its elements are changed in place.
  Array direction = residual;
  const hcyclient::Span<double> p = direction.span<double>();
  double size = square(residual);
  for (std::size_t step = 0; step < 2 * points && size > 1e-20; ++step) {
    const Vector q = context.feval(url, {matrix, direction})[0].toVector<double>();
    if (q.size() != points) throw std::runtime_error("the product has another length");
    const double length = size / std::inner_product(q.begin(), q.end(), p.begin(), 0.0);
    for (std::size_t i = 0; i < points; ++i) {
      x[i] += length * p[i];
      residual[i] -= length * q[i];
    }
    const double next = square(residual);
    for (std::size_t i = 0; i < points; ++i) p[i] = residual[i] + next / size * p[i];
    size = next;
  }
  return x;
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 2) throw hcyclient::UsageError("usage: sparse_solve SERVER_URL");
  const hcyclient::Library library;
  hcyclient::Context context{hcyclient::Config(library)};
  const Vector x = solve(context, std::string(argv[1]) + "/sparse/multiply");
  double error = 0.0;
  for (std::size_t i = 0; i < points; ++i) {
    error = std::fmax(error, std::fabs(x[i] - 0.5 * static_cast<double>((i + 1) * (points - i))));
  }
  std::printf("x[0] = %.6f, x[%zu] = %.6f\n", x[0], points / 2, x[points / 2]);
  std::puts(error < 1e-9 ? "exact to 9 digits" : "inexact");
} catch (const std::exception& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
