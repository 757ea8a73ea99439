// SPDX-License-Identifier: Apache-2.0
//
// Functions of a C++ program on a server of its own.

#include <hcy/hcyclient_server.hpp>
#include <iostream>

int main() {
  // C++ functions.
  const hcyclient::Library library;
  hcyclient::Server server(library);
  server.add("my/scale", [](const hcyclient::Server::Inputs& in) {
    return in.at(0).scalar() * in.at(1).scalar();
  });
  server.add("shop/price", [](const hcyclient::Server::Inputs& in) -> hcyclient::Array {
    throw hcyclient::FunctionError("there is no " + in.at(0).toString(), "shop:unknown", {});
  });
  server.listen();

  hcyclient::Context context{hcyclient::Config(library)};
  std::cout << context.feval(server.url("my/scale"), {2.0, 10.0})[0].scalar() << '\n';
  try {
    context.feval(server.url("shop/price"), {"teapot"});
  } catch (const hcyclient::FunctionError& error) {
    std::cout << error.identifier() << ": " << error.what() << '\n';
  }
}
