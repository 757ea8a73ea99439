// SPDX-License-Identifier: Apache-2.0
//
// Adds 2 and 3 on a server, in C++11 by the C header.

#include <hcy/hcyclient.h>

#include <iostream>
#include <memory>

int main(int argc, char** argv) {
  using Array = std::unique_ptr<hcyArray, decltype(&hcyDestroyArray)>;
  hcyClientRuntime* runtime = hcyInitialize();
  hcyClientConfig* config = nullptr;
  hcyClientContext* context = nullptr;
  if (argc < 2 || runtime == nullptr || runtime->createConfig(&config) != 0 ||
      runtime->createContext(&context, config) != 0) {
    return 1;
  }

  const Array a(hcyCreateDoubleScalar(2), &hcyDestroyArray);
  const Array b(hcyCreateDoubleScalar(3), &hcyDestroyArray);
  const hcyArray* inputs[] = {a.get(), b.get()};
  hcyArray* output = nullptr;
  const int failed = runtime->feval(context, argv[1], 1, &output, 2, inputs);
  const Array sum(output, &hcyDestroyArray);
  if (failed == 0) std::cout << "2 + 3 = " << hcyGetScalar(sum.get()) << '\n';

  runtime->destroyContext(context);
  runtime->destroyConfig(config);
  hcyTerminate();
  return failed;
}
