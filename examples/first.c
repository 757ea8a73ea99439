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
  if (failed) {
    hcyErrorInfo error;
    runtime->getLastErrorInfo(context, &error);
    if (error.kind == HCY_HTTP_ERROR)
      printf("The call failed: HTTP status %u\n", (unsigned)error.details.http.statusCode);
    else
      printf("The call failed: %s\n", error.kind == HCY_VORTEN_ERROR
                                          ? error.details.vorten.message
                                          : error.details.generic.details);
    runtime->destroyLastErrorInfo(&error);
  } else if (hcyGetPr(sum) == NULL) {
    printf("The sum did not arrive.\n");
    failed = 1;
  } else {
    printf("2 + 3 = %g\n", *hcyGetPr(sum));
  }

  hcyDestroyArray(a), hcyDestroyArray(b), hcyDestroyArray(sum);
  runtime->destroyContext(context), runtime->destroyConfig(config);
  hcyTerminate();
  return failed;
}
