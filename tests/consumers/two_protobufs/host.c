/* SPDX-License-Identifier: Apache-2.0
 *
 * Loads the library and another one that uses Protocol Buffers, in either order, and uses both.
 *
 * Usage: host LIBRARY OTHER library|other local|global, the third argument being what is loaded
 * first
 */
#include <dlfcn.h>
#include <hcy/hcyclient.h>
#include <stdio.h>
#include <string.h>

static void* library;
static void* other;

/* ISO C converts no pointer to an object into one to a function, POSIX does. */
#define FIND(from, function, name) (*(void**)(void*)&(function) = dlsym(from, name))

static int otherWorks(void) {
  bool (*works)(void);
  FIND(other, works, "otherWorks");
  return works();
}

/* Makes the body of a call, which nobody gets. */
static int libraryWorks(void) {
  hcyClientRuntime* (*initialize)(void);
  hcyArray* (*scalar)(double);
  void (*destroy)(hcyArray*);
  void (*terminate)(void);
  FIND(library, initialize, "hcyInitialize");
  FIND(library, scalar, "hcyCreateDoubleScalar");
  FIND(library, destroy, "hcyDestroyArray");
  FIND(library, terminate, "hcyTerminate");

  hcyClientRuntime* const runtime = initialize();
  hcyClientConfig* config = NULL;
  hcyClientContext* context = NULL;
  if (runtime == NULL || runtime->createConfig(&config) != 0 ||
      runtime->createContext(&context, config) != 0)
    return 0;
  hcyArray* const number = scalar(2);
  const hcyArray* const inputs[] = {number};
  hcyArray* output = NULL;
  const int failed = runtime->feval(context, "http://127.0.0.1:1/math/plus", 1, &output, 1, inputs);
  hcyErrorInfo error;
  runtime->getLastErrorInfo(context, &error);
  const int notConnected =
      error.kind == HCY_GENERIC_ERROR && strstr(error.details.generic.details, "connect") != NULL;
  runtime->destroyLastErrorInfo(&error);
  destroy(number);
  runtime->destroyContext(context);
  runtime->destroyConfig(config);
  terminate();
  return failed && notConnected;
}

static void* load(const char* name, int scope) {
  void* const loaded = dlopen(name, RTLD_NOW | scope);
  if (loaded == NULL) fprintf(stderr, "%s\n", dlerror());
  return loaded;
}

int main(int argc, char** argv) {
  if (argc != 5) return 2;
  const int scope = strcmp(argv[4], "global") == 0 ? RTLD_GLOBAL : RTLD_LOCAL;
  if (strcmp(argv[3], "library") == 0) {
    if ((library = load(argv[1], scope)) == NULL || !libraryWorks()) return 3;
    if ((other = load(argv[2], scope)) == NULL) return 3;
  } else {
    if ((other = load(argv[2], scope)) == NULL || !otherWorks()) return 3;
    if ((library = load(argv[1], scope)) == NULL) return 3;
  }
  if (!libraryWorks() || !otherWorks() || !libraryWorks()) return 4;
  puts("both work");
  return 0;
}
