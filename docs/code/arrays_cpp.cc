// SPDX-License-Identifier: Apache-2.0
//
// How arrays lie in memory, and who owns what.

#include <hcy/hcyclient.hpp>
#include <iostream>

using hcyclient::Array;

static void columnMajor() {
  Array matrix({0.0, 10.0, 1.0, 11.0, 2.0, 12.0}, {2, 3});
  hcyclient::Span<double> elements = matrix.span<double>();  // no copy
  std::cout << "element (1, 2) is " << elements[matrix.index({1, 2})] << '\n';
  elements[0] = 5.0;
  std::cout << "the first is " << matrix.toVector<double>()[0] << '\n';  // a copy

  Array same = Array::fromRows<double>({{5, 1, 2},  //
                                        {10, 11, 12}});
  std::cout << (same.toVector<double>() == matrix.toVector<double>()) << '\n';
}

static void checked() {
  const Array bytes = std::vector<std::uint8_t>{1, 2, 3};
  try {
    bytes.span<double>();
  } catch (const hcyclient::UsageError& error) {
    std::cout << error.what() << '\n';
  }
}

static void nested() {
  Array s = Array::structOf({{"name", "box"}, {"sides", Array::cells({3, 1})}});
  s("name") = "Z\u00fcrich";   // UTF-8 in C++
  s("sides")[0] = 2.5;         // through both containers
  s("sides")[1] = {1.0, 2.0};  // a column
  Array name = s("name");      // a handle of its own
  std::cout << name.toString() << ", " << name.size() << " code units, side "
            << s("sides")[0].scalar() << '\n';
}

static void sparse() {
  const Array matrix = Array::sparse<double>(3, 3, {{0, 0, 1.5}, {2, 1, -2.5}});
  for (const auto& entry : matrix.entries<double>()) {
    std::cout << '(' << entry.row << ", " << entry.column << ") " << entry.value << '\n';
  }
}

// An array as a broken reply would bring it: dimensions that are too large stay set.
static Array withTooFewElements() {
  Array array = {1.0, 2.0};
  const std::size_t shape[] = {3, 1000000000};
  hcySetDimensions(array.get(), shape, 2);
  return array;
}

static void incomplete() {
  const Array numbers = withTooFewElements();
  try {
    for (const double number : numbers.toVector<double>()) std::cout << number << '\n';
  } catch (const hcyclient::IncompleteReply& error) {
    std::cout << error.what() << '\n';
  }
}

int main() {
  columnMajor();
  checked();
  nested();
  sparse();
  incomplete();
}
