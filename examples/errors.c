/* SPDX-License-Identifier: Apache-2.0
 *
 * Shows the three kinds of failure, and that the context can be used afterwards.
 *
 * Usage: errors SERVER_URL UNUSED_URL
 *   UNUSED_URL  a URL with a port on which nothing listens
 */
#include <hcy/hcyclient.h>
#include <stdio.h>
#include <stdlib.h>

#include "print_failure.h"

enum { URL_LENGTH = 512 };

/* Evaluates SERVER/function for one output and prints it or the failure. */
static void evaluate(const hcyClientRuntime* runtime, hcyClientContext* context, const char* server,
                     const char* function, int nargin, const hcyArray* const* inputs) {
  char url[URL_LENGTH];
  hcyArray* output = NULL;
  snprintf(url, sizeof url, "%s/%s", server, function);
  printf("%s: ", function);
  if (runtime->feval(context, url, 1, &output, nargin, inputs) == 0)
    printf("%g\n", hcyGetScalar(output));
  else
    printFailure(runtime, context);
  hcyDestroyArray(output); /* after a failure, it is null, which is ignored */
}

static void evaluateAll(const hcyClientRuntime* runtime, hcyClientContext* context,
                        const char* server, const char* unused) {
  hcyArray* identifier = hcyCreateString("example:demonstration");
  hcyArray* message = hcyCreateString("This error was asked for.");
  hcyArray* two = hcyCreateDoubleScalar(2.0);
  const hcyArray* failing[] = {identifier, message, two};
  const hcyArray* twice[] = {two, two};
  evaluate(runtime, context, server, "demo/fail", 3, failing);
  evaluate(runtime, context, server, "no/such/function", 0, NULL);
  evaluate(runtime, context, unused, "math/plus", 2, twice);
  evaluate(runtime, context, server, "math/plus", 2, twice);
  hcyDestroyArray(identifier), hcyDestroyArray(message), hcyDestroyArray(two);
}

int main(int argc, char** argv) {
  hcyClientConfig* config = NULL;
  hcyClientContext* context = NULL;
  hcyClientRuntime* runtime = hcyInitializeEx(HCY_CLIENT_RUNTIME_1_1);
  if (runtime == NULL) {
    fprintf(stderr, "%s\n", hcyGetInitializationErrorMessage());
    return EXIT_FAILURE;
  }
  if (argc != 3 || runtime->createConfig(&config) != 0 ||
      runtime->createContext(&context, config) != 0)
    return EXIT_FAILURE;
  evaluateAll(runtime, context, argv[1], argv[2]);
  runtime->destroyContext(context);
  runtime->destroyConfig(config);
  hcyTerminate();
  return EXIT_SUCCESS;
}
