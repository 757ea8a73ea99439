// SPDX-License-Identifier: Apache-2.0
//
// Shows the three kinds of failure, and that the context can be used afterwards.
//
// Usage: errors SERVER_URL UNUSED_URL
//   UNUSED_URL  a URL with a port on which nothing listens

#include <hcy/hcyclient.hpp>
#include <iostream>
#include <string>

namespace {

void evaluate(hcyclient::Context& context, const std::string& server, const std::string& function,
              std::initializer_list<hcyclient::Input> inputs) {
  std::cout << function << ": ";
  try {
    std::cout << context.feval(server + "/" + function, inputs).at(0).scalar() << '\n';
  } catch (const hcyclient::FunctionError& error) {
    std::cout << error.identifier() << ": " << error.what() << '\n';
    for (const hcyclient::StackFrame& frame : error.stack()) {
      std::cout << "  in " << frame.name << ", " << frame.file << ", line " << frame.line << '\n';
    }
  } catch (const hcyclient::CallError& error) {  // HttpError and TransportError
    std::cout << error.what() << '\n';
  }
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 3) throw hcyclient::UsageError("usage: errors SERVER_URL UNUSED_URL");
  const hcyclient::Library library;
  hcyclient::Context context{hcyclient::Config(library)};
  evaluate(context, argv[1], "demo/fail",
           {"example:demonstration", "This error was asked for.", 2.0});
  evaluate(context, argv[1], "no/such/function", {});
  evaluate(context, argv[2], "math/plus", {2.0, 2.0});
  evaluate(context, argv[1], "math/plus", {2.0, 2.0});
} catch (const std::exception& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
