/* SPDX-License-Identifier: Apache-2.0
 *
 * Fits a straight line on the server to the 36 observations of NIST's reference data set Norris,
 * compares the result with the certified one, and shows three kinds of failure.
 *
 * Usage: norris SERVER_URL DATA_FILE UNUSED_URL
 *   SERVER_URL  a running hcy-local-server, such as http://127.0.0.1:8080
 *   DATA_FILE   data/norris.csv
 *   UNUSED_URL  a URL with a port on which nothing listens
 */
#include <hcy/hcyclient.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { OBSERVATIONS = 36, URL_LENGTH = 512 };

/* Reads the observations "y,x" after the header of the file; returns their number. */
static int readObservations(const char* path, double* x, double* y) {
  char line[256];
  int count = 0;
  FILE* const file = fopen(path, "r");
  if (file == NULL) return 0;
  while (count < OBSERVATIONS && fgets(line, sizeof line, file) != NULL) {
    if (sscanf(line, "%lf,%lf", &y[count], &x[count]) == 2) ++count;
  }
  fclose(file);
  return count;
}

/* Prints a value, the certified value, and the number of digits in which they agree. */
static void printBeside(const char* name, double value, double certified) {
  const double error = fabs(value - certified) / fabs(certified);
  const double digits = error == 0.0 ? 15.0 : fmin(15.0, -log10(error));
  printf("  %-28s %22.15g  certified %22.15g  digits %4.1f\n", name, value, certified, digits);
}

/* Prints element `index` of a field of a 1-by-1 struct array, and the certified value. */
static void printField(const hcyArray* fit, const char* field, size_t index, double certified) {
  hcyArray* const value = hcyGetField(fit, 0, field);
  if (value == NULL || hcyGetPr(value) == NULL || hcyIsSparse(value) ||
      index >= hcyGetNumberOfElements(value)) {
    printf("  %-28s is missing\n", field);
  } else {
    printBeside(field, hcyGetPr(value)[index], certified);
  }
  hcyDestroyArray(value);
}

/* Prints the error record of the last failed call. */
static void printError(const hcyClientRuntime* runtime, const hcyClientContext* context) {
  hcyErrorInfo info;
  size_t i;
  runtime->getLastErrorInfo(context, &info);
  printf("  %s\n", info.message);
  switch (info.kind) {
    case HCY_HTTP_ERROR:
      printf("  status %u %.*s\n", (unsigned)info.details.http.statusCode,
             (int)strcspn(info.details.http.statusMessage, "\r\n"),
             info.details.http.statusMessage);
      break;
    case HCY_VORTEN_ERROR:
      printf("  %s: %s\n", info.details.vorten.identifier, info.details.vorten.message);
      for (i = 0; info.details.vorten.stack != NULL && i < info.details.vorten.stackDepth; ++i) {
        const hcyErrorStackFrame* const frame = &info.details.vorten.stack[i];
        printf("    at %s (%s:%d)\n", frame->name, frame->file, (int)frame->line);
      }
      break;
    default:
      printf("  %s\n", info.details.generic.details);
  }
  runtime->destroyLastErrorInfo(&info);
}

/* Evaluates SERVER/function; returns 0 and the outputs, or prints the failure and returns 1. */
static int evaluate(const hcyClientRuntime* runtime, hcyClientContext* context, const char* server,
                    const char* function, int nargout, hcyArray** outputs, int nargin,
                    const hcyArray* const* inputs) {
  char url[URL_LENGTH];
  snprintf(url, sizeof url, "%s/%s", server, function);
  if (runtime->feval(context, url, nargout, outputs, nargin, inputs) == 0) return 0;
  printError(runtime, context);
  return 1;
}

static int fitLine(const hcyClientRuntime* runtime, hcyClientContext* context, const char* server,
                   const double* xValues, const double* yValues) {
  hcyArray* outputs[2] = {NULL, NULL};
  hcyArray* const x = hcyCreateDoubleMatrix(OBSERVATIONS, 1, hcyREAL);
  hcyArray* const y = hcyCreateDoubleMatrix(OBSERVATIONS, 1, hcyREAL);
  const hcyArray* inputs[2];
  int status;
  inputs[0] = x;
  inputs[1] = y;
  memcpy(hcyGetPr(x), xValues, OBSERVATIONS * sizeof(double));
  memcpy(hcyGetPr(y), yValues, OBSERVATIONS * sizeof(double));
  printf("stats/linear_fit of %d observations\n", OBSERVATIONS);
  status = evaluate(runtime, context, server, "stats/linear_fit", 2, outputs, 2, inputs);
  if (status == 0 && (hcyGetPr(outputs[0]) == NULL || hcyIsSparse(outputs[0]) ||
                      hcyGetNumberOfElements(outputs[0]) != 2)) {
    printf("  the coefficients are not two doubles\n");
    status = 1;
  } else if (status == 0) {
    printBeside("intercept", hcyGetPr(outputs[0])[0], -0.262323073774029);
    printBeside("slope", hcyGetPr(outputs[0])[1], 1.00211681802045);
    printField(outputs[1], "standardErrors", 0, 0.232818234301152);
    printField(outputs[1], "standardErrors", 1, 0.429796848199937E-03);
    printField(outputs[1], "residualStandardDeviation", 0, 0.884796396144373);
    printField(outputs[1], "rSquared", 0, 0.999993745883712);
    printField(outputs[1], "degreesOfFreedom", 0, 34.0);
  }
  hcyDestroyArray(outputs[0]);
  hcyDestroyArray(outputs[1]);
  hcyDestroyArray(x);
  hcyDestroyArray(y);
  return status;
}

/* Makes three calls that should fail; returns how many of them did. */
static int showFailures(const hcyClientRuntime* runtime, hcyClientContext* context,
                        const char* server, const char* unused) {
  int failures = 0;
  const hcyArray* inputs[3];
  hcyArray* const identifier = hcyCreateString("example:demonstration");
  hcyArray* const message = hcyCreateString("This error was asked for.");
  hcyArray* const depth = hcyCreateDoubleScalar(3.0);
  inputs[0] = identifier;
  inputs[1] = message;
  inputs[2] = depth;
  printf("A function that raises an error\n");
  failures += evaluate(runtime, context, server, "demo/fail", 0, NULL, 3, inputs);
  printf("A URL that names no function\n");
  failures += evaluate(runtime, context, server, "no/such/function", 0, NULL, 0, NULL);
  printf("A port on which nothing listens\n");
  failures += evaluate(runtime, context, unused, "stats/linear_fit", 0, NULL, 0, NULL);
  hcyDestroyArray(identifier);
  hcyDestroyArray(message);
  hcyDestroyArray(depth);
  return failures;
}

int main(int argc, char** argv) {
  double x[OBSERVATIONS], y[OBSERVATIONS];
  hcyClientConfig* config = NULL;
  hcyClientContext* context = NULL;
  const hcyClientRuntime* runtime;
  int status = EXIT_FAILURE;
  if (argc != 4 || readObservations(argv[2], x, y) != OBSERVATIONS) {
    fprintf(stderr, "usage: norris SERVER_URL DATA_FILE UNUSED_URL\n");
    return EXIT_FAILURE;
  }
  runtime = hcyInitializeEx(HCY_CLIENT_RUNTIME_1_1);
  if (runtime == NULL) {
    fprintf(stderr, "%s\n", hcyGetInitializationErrorMessage());
    return EXIT_FAILURE;
  }
  if (runtime->createConfig(&config) == 0 && runtime->createContext(&context, config) == 0 &&
      fitLine(runtime, context, argv[1], x, y) == 0 &&
      showFailures(runtime, context, argv[1], argv[3]) == 3) {
    status = EXIT_SUCCESS;
  }
  if (context != NULL) runtime->destroyContext(context);
  if (config != NULL) runtime->destroyConfig(config);
  hcyTerminate();
  return status;
}
