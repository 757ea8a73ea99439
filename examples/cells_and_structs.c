/* SPDX-License-Identifier: Apache-2.0
 *
 * Cells and structs: the words of a text as a cell array, the description of a matrix as a struct
 * array, and a container that is filled, sent and read.
 *
 * Usage: cells_and_structs SERVER_URL
 */
#include <hcy/hcyclient.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { URL_LENGTH = 512 };

/* Evaluates SERVER/function with one input; returns null if the call failed. */
static hcyArray* evaluate(const hcyClientRuntime* runtime, hcyClientContext* context,
                          const char* server, const char* function, const hcyArray* input) {
  char url[URL_LENGTH];
  hcyArray* output = NULL;
  snprintf(url, sizeof url, "%s/%s", server, function);
  return runtime->feval(context, url, 1, &output, 1, &input) == 0 ? output : NULL;
}

/* Prints the text of a char array. hcyArrayToString() returns new memory. The array is null if it
 * is an element that did not arrive. */
static void printText(const hcyArray* array) {
  char* text = array == NULL ? NULL : hcyArrayToString(array);
  printf("%s", text == NULL ? "?" : text);
  hcyFree(text);
}

static int printWords(const hcyClientRuntime* runtime, hcyClientContext* context,
                      const char* server) {
  hcyArray* sentence = hcyCreateString("cells hold arrays");
  hcyArray* words = evaluate(runtime, context, server, "text/split", sentence);
  hcyDestroyArray(sentence);
  if (words == NULL) return 1;
  for (size_t i = 0; i < hcyGetNumberOfElements(words); ++i) {
    hcyArray* word = hcyGetCell(words, i); /* a new handle to the element */
    printf("word %zu: ", i);
    printText(word);
    printf("\n");
    hcyDestroyArray(word);
  }
  hcyDestroyArray(words);
  return 0;
}

static int printColumns(const hcyClientRuntime* runtime, hcyClientContext* context,
                        const char* server) {
  static const double values[] = {1.0, 2.0, 6.0, 10.0, 20.0, 30.0};
  hcyArray* matrix = hcyCreateDoubleMatrix(3, 2, hcyREAL);
  memcpy(hcyGetPr(matrix), values, sizeof values);
  hcyArray* columns = evaluate(runtime, context, server, "stats/describe", matrix);
  hcyDestroyArray(matrix);
  if (columns == NULL) return 1;
  for (size_t i = 0; i < hcyGetNumberOfElements(columns); ++i) {
    hcyArray *mean = hcyGetField(columns, i, "mean"), *median = hcyGetField(columns, i, "median");
    if (mean != NULL && median != NULL)
      printf("column %zu: mean %g, median %g\n", i, hcyGetScalar(mean), hcyGetScalar(median));
    hcyDestroyArray(mean), hcyDestroyArray(median);
  }
  hcyDestroyArray(columns);
  return 0;
}

/* The field shares the value; our handle is no longer needed. */
static void setField(hcyArray* array, size_t index, const char* field, hcyArray* value) {
  hcySetField(array, index, field, value);
  hcyDestroyArray(value);
}

static int printPeople(const hcyClientRuntime* runtime, hcyClientContext* context,
                       const char* server) {
  const char* const fields[] = {"name", "born"};
  hcyArray* people = hcyCreateStructMatrix(1, 2, 2, fields);
  setField(people, 0, "name", hcyCreateString("Ada"));
  setField(people, 0, "born", hcyCreateDoubleScalar(1815.0));
  setField(people, 1, "name", hcyCreateString("Grace"));
  setField(people, 1, "born", hcyCreateDoubleScalar(1906.0));
  hcyArray* echoed = evaluate(runtime, context, server, "echo", people);
  hcyDestroyArray(people);
  if (echoed == NULL) return 1;
  for (size_t i = 0; i < hcyGetNumberOfElements(echoed); ++i) {
    hcyArray *name = hcyGetField(echoed, i, "name"), *born = hcyGetField(echoed, i, "born");
    if (name != NULL && born != NULL) {
      printText(name);
      printf(" was born in %g.\n", hcyGetScalar(born));
    }
    hcyDestroyArray(name), hcyDestroyArray(born);
  }
  hcyDestroyArray(echoed);
  return 0;
}

int main(int argc, char** argv) {
  hcyClientConfig* config = NULL;
  hcyClientContext* context = NULL;
  hcyClientRuntime* runtime = hcyInitializeEx(HCY_CLIENT_RUNTIME_1_1);
  if (argc != 2 || runtime == NULL || runtime->createConfig(&config) != 0 ||
      runtime->createContext(&context, config) != 0)
    return EXIT_FAILURE;
  const int failed = printWords(runtime, context, argv[1]) ||
                     printColumns(runtime, context, argv[1]) ||
                     printPeople(runtime, context, argv[1]);
  runtime->destroyContext(context);
  runtime->destroyConfig(config);
  hcyTerminate();
  return failed ? EXIT_FAILURE : EXIT_SUCCESS;
}
