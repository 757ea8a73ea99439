// SPDX-License-Identifier: Apache-2.0
//
// Memory layout and ownership of arrays.

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
  Array name = s("name");      // a new handle
  std::cout << name.toString() << ", " << name.size() << " code units, side "
            << s("sides")[0].scalar() << '\n';
}

static void sparse() {
  const Array matrix = Array::sparse<double>(3, 3, {{0, 0, 1.5}, {2, 1, -2.5}});
  for (const auto& entry : matrix.entries<double>()) {
    std::cout << '(' << entry.row << ", " << entry.column << ") " << entry.value << '\n';
  }
}

static void complete(hcyclient::Context& context, const std::string& url) {
  try {
    const Array numbers = context.feval(url, {{1.0, 2.0}})[0];
    for (const double number : numbers.toVector<double>()) std::cout << number << '\n';
  } catch (const hcyclient::IncompleteReply& error) {
    std::cerr << error.what() << '\n';  // which output, and how many elements it should have
  }
}

int main(int, char** argv) {
  columnMajor();
  checked();
  nested();
  sparse();
  const hcyclient::Library library;
  hcyclient::Context context{hcyclient::Config(library)};
  complete(context, std::string(argv[1]) + "/echo");
}
