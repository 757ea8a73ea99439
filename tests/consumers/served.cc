// SPDX-License-Identifier: Apache-2.0
//
// Adds 2 and 3 on a server of its own.

#include <hcy/hcyclient_server.hpp>
#include <iostream>

int main() {
  const hcyclient::Library library;
  hcyclient::Server server(library);
  server.add("plus", [](const hcyclient::Server::Inputs& in) {
    return in.at(0).scalar() + in.at(1).scalar();
  });
  server.listen();
  hcyclient::Context context{hcyclient::Config(library)};
  std::cout << "2 + 3 = " << context.call(server.url("plus"), 2.0, 3.0).scalar() << '\n';
}
