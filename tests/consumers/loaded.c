/* SPDX-License-Identifier: Apache-2.0
 *
 * Adds 2 and 3 on a server by a library that it loads when it runs: it never saw a header, and
 * knows the operations by their numbers.
 *
 * Usage: loaded URL LIBRARY
 */
#include <dlfcn.h>
#include <stdint.h>
#include <stdio.h>

typedef void (*Function)(void);

enum { CREATE_CONFIG = 0, DESTROY_CONFIG = 1, CREATE_CONTEXT = 6, DESTROY_CONTEXT = 7, FEVAL = 10 };

static void* library;

/* An exported function. ISO C converts no pointer to an object into one to a function, POSIX does.
 */
static Function exported(const char* name) {
  Function function;
  *(void**)(void*)&function = dlsym(library, name);
  return function;
}

int main(int argc, char** argv) {
  library = argc == 3 ? dlopen(argv[2], RTLD_NOW | RTLD_LOCAL) : NULL;
  if (library == NULL) {
    fprintf(stderr, "%s\n", argc == 3 ? dlerror() : "URL LIBRARY");
    return 1;
  }
  Function* const slots = ((Function * (*)(int)) exported("hcyInitializeEx"))(0x10000);
  void* (*const scalar)(double) = (void* (*)(double))exported("hcyCreateDoubleScalar");
  double (*const value)(const void*) = (double (*)(const void*))exported("hcyGetScalar");
  void (*const destroy)(void*) = (void (*)(void*))exported("hcyDestroyArray");

  void *config = NULL, *context = NULL;
  if (slots == NULL || ((int (*)(void**))slots[CREATE_CONFIG])(&config) != 0 ||
      ((int (*)(void**, const void*))slots[CREATE_CONTEXT])(&context, config) != 0)
    return 1;

  void *inputs[] = {scalar(2), scalar(3)}, *sum = NULL;
  const int failed = ((int (*)(void*, const char*, int32_t, void**, int32_t, void**))slots[FEVAL])(
      context, argv[1], 1, &sum, 2, inputs);
  if (!failed) printf("2 + 3 = %g\n", value(sum));

  destroy(inputs[0]), destroy(inputs[1]), destroy(sum);
  ((void (*)(void*))slots[DESTROY_CONTEXT])(context);
  ((void (*)(void*))slots[DESTROY_CONFIG])(config);
  exported("hcyTerminate")();
  return failed;
}
