/* SPDX-License-Identifier: Apache-2.0 */
#include <hcy/hcyclient.h>
#include <stdio.h>

int main(int argc, char** argv) {
  const char* url = argc > 1 ? argv[1] : "http://127.0.0.1:8080/math/plus";
  hcyClientRuntime* runtime = hcyInitializeEx(HCY_CLIENT_RUNTIME_1_1);
  hcyClientConfig* config = NULL;
  hcyClientContext* context = NULL;
  if (runtime == NULL || runtime->createConfig(&config) != 0 ||
      runtime->createContext(&context, config) != 0)
    return 1;

  hcyArray *a = hcyCreateDoubleScalar(2.0), *b = hcyCreateDoubleScalar(3.0), *sum = NULL;
  const hcyArray* inputs[] = {a, b};
  int failed = runtime->feval(context, url, 1, &sum, 2, inputs);
  const double* value = failed ? NULL : hcyGetPr(sum); /* null if it did not arrive */
  if (value == NULL)
    printf("The call failed.\n"); /* getLastErrorInfo says why */
  else
    printf("2 + 3 = %g\n", *value);
  failed = value == NULL;

  hcyDestroyArray(a), hcyDestroyArray(b), hcyDestroyArray(sum);
  runtime->destroyContext(context), runtime->destroyConfig(config);
  hcyTerminate();
  return failed;
}
