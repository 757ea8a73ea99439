// SPDX-License-Identifier: Apache-2.0
#include <hcy/hcyclient.hpp>
#include <iostream>

int main(int argc, char** argv) try {
  const char* url = argc > 1 ? argv[1] : "http://127.0.0.1:8080/math/plus";
  const hcyclient::Library library;
  hcyclient::Context context{hcyclient::Config(library)};

  const hcyclient::Array sum = context.call(url, 2.0, 3.0);
  std::cout << "2 + 3 = " << sum.scalar() << '\n';
} catch (const hcyclient::Error& error) {
  std::cout << "The call failed: " << error.what() << '\n';
  return 1;
}
