/* SPDX-License-Identifier: Apache-2.0
 *
 * Solves three equations in three unknowns.
 *
 * Usage: solve [URL]
 */
#include <hcy/hcyclient.h>
#include <stdio.h>
#include <string.h>

#include "print_failure.h"

/*  2 x1 +   x2 -   x3 =   8
 * -3 x1 -   x2 + 2 x3 = -11
 * -2 x1 +   x2 + 2 x3 =  -3, column by column. */
static const double coefficients[] = {2, -3, -2, 1, -1, 1, -1, 2, 2};
static const double constants[] = {8, -11, -3};

static int solve(const hcyClientRuntime* runtime, hcyClientContext* context, const char* url) {
  hcyArray* A = hcyCreateDoubleMatrix(3, 3, hcyREAL);
  hcyArray* b = hcyCreateDoubleMatrix(3, 1, hcyREAL);
  memcpy(hcyGetPr(A), coefficients, sizeof coefficients);
  memcpy(hcyGetPr(b), constants, sizeof constants);

  hcyArray* x = NULL;
  const hcyArray* inputs[] = {A, b};
  int failed = runtime->feval(context, url, 1, &x, 2, inputs);
  if (failed) {
    printFailure(runtime, context);
  } else if (hcyGetPr(x) == NULL || hcyIsSparse(x) || hcyGetNumberOfElements(x) != 3) {
    printf("The output is not three doubles, or not all of them arrived.\n");
    failed = 1;
  } else {
    for (size_t i = 0; i < 3; ++i) printf("x%d = %g\n", (int)i + 1, hcyGetPr(x)[i]);
  }

  hcyDestroyArray(A), hcyDestroyArray(b), hcyDestroyArray(x);
  return failed;
}

int main(int argc, char** argv) {
  const char* url = argc > 1 ? argv[1] : "http://127.0.0.1:8080/linalg/solve";
  hcyClientConfig* config = NULL;
  hcyClientContext* context = NULL;
  hcyClientRuntime* runtime = hcyInitializeEx(HCY_CLIENT_RUNTIME_1_1);
  if (runtime == NULL) {
    printf("%s\n", hcyGetInitializationErrorMessage());
    return 1;
  }
  if (runtime->createConfig(&config) != 0 || runtime->createContext(&context, config) != 0)
    return 1;
  int failed = solve(runtime, context, url);
  runtime->destroyContext(context), runtime->destroyConfig(config);
  hcyTerminate();
  return failed;
}
