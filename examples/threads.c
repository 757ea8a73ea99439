/* SPDX-License-Identifier: Apache-2.0
 *
 * Many calls on many threads: a context for each thread, made from one configuration.
 *
 * Usage: threads SERVER_URL
 */
#include <hcy/hcyclient.h>
#include <pthread.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>

enum { THREADS = 8, CALLS = 100, URL_LENGTH = 512 };

typedef struct Worker {
  pthread_t thread;
  const hcyClientRuntime* runtime;
  hcyClientContext* context;
  const char* url;
  int number, right;
} Worker;

/* Adds numbers on the server and counts the correct sums. */
static void* work(void* argument) {
  Worker* worker = argument;
  for (int i = 0; i < CALLS; ++i) {
    hcyArray *a = hcyCreateDoubleScalar(worker->number), *b = hcyCreateDoubleScalar(i), *sum = NULL;
    const hcyArray* inputs[] = {a, b};
    if (worker->runtime->feval(worker->context, worker->url, 1, &sum, 2, inputs) == 0 &&
        hcyGetScalar(sum) == worker->number + i)
      ++worker->right;
    hcyDestroyArray(a), hcyDestroyArray(b), hcyDestroyArray(sum);
  }
  return NULL;
}

int main(int argc, char** argv) {
  char url[URL_LENGTH];
  Worker workers[THREADS];
  int started = 0, right = 0;
  hcyClientConfig* config = NULL;
  signal(SIGPIPE, SIG_IGN); /* libcurl needs this if several threads make calls */
  hcyClientRuntime* runtime = hcyInitializeEx(HCY_CLIENT_RUNTIME_1_1);
  if (argc != 2 || runtime == NULL || runtime->createConfig(&config) != 0) return EXIT_FAILURE;
  snprintf(url, sizeof url, "%s/math/plus", argv[1]);
  for (; started < THREADS; ++started) {
    Worker* worker = &workers[started];
    *worker = (Worker){.runtime = runtime, .url = url, .number = 1000 * started};
    if (runtime->createContext(&worker->context, config) != 0) break;
    if (pthread_create(&worker->thread, NULL, work, worker) != 0) {
      runtime->destroyContext(worker->context);
      break;
    }
  }
  for (int i = 0; i < started; ++i) {
    pthread_join(workers[i].thread, NULL);
    runtime->destroyContext(workers[i].context);
    right += workers[i].right;
  }
  printf("%d threads, %d of %d sums are right\n", started, right, THREADS * CALLS);
  runtime->destroyConfig(config);
  hcyTerminate();
  return right == THREADS * CALLS ? EXIT_SUCCESS : EXIT_FAILURE;
}
