// SPDX-License-Identifier: Apache-2.0
//
// Solves three equations in three unknowns.
//
// Usage: solve [URL]

#include <hcy/hcyclient.hpp>
#include <iostream>
#include <string>

using hcyclient::Array;

int main(int argc, char** argv) try {
  const std::string url = argc > 1 ? argv[1] : "http://127.0.0.1:8080/linalg/solve";
  const hcyclient::Library library;
  hcyclient::Context context{hcyclient::Config(library)};

  const Array A = Array::fromRows<double>({{2, 1, -1},  //
                                           {-3, -1, 2},
                                           {-2, 1, 2}});
  const Array b({8.0, -11.0, -3.0});
  const Array x = context.call(url, A, b);
  int number = 0;
  for (const double value : x.span<double>()) {
    std::cout << 'x' << ++number << " = " << value << '\n';
  }
} catch (const hcyclient::Error& error) {
  std::cout << "The call failed: " << error.what() << '\n';
  return 1;
}
