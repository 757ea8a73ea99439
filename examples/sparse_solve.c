/* SPDX-License-Identifier: Apache-2.0
 *
 * Solves A x = b for a sparse A by conjugate gradients; the server multiplies by A.
 *
 * A is the second difference on a grid of POINTS points, b is all ones, and so the solution is
 * known: x[i] = (i + 1) (POINTS - i) / 2.
 *
 * Usage: sparse_solve SERVER_URL
 */
#include <hcy/hcyclient.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

enum { POINTS = 50, URL_LENGTH = 512 };

typedef struct Server {
  hcyClientRuntime* runtime;
  hcyClientConfig* config;
  hcyClientContext* context;
  char url[URL_LENGTH];
} Server;

/* The tridiagonal matrix with 2 on the diagonal and -1 next to it, column by column. */
static hcyArray* secondDifference(void) {
  hcyArray* matrix = hcyCreateSparse(POINTS, POINTS, 3 * POINTS - 2, hcyREAL);
  size_t *ir = hcyGetIr(matrix), *jc = hcyGetJc(matrix), stored = 0;
  double* pr = hcyGetPr(matrix);
  for (size_t j = 0; j < POINTS; ++j) {
    for (size_t i = j == 0 ? 0 : j - 1; i <= j + 1 && i < POINTS; ++i, ++stored) {
      ir[stored] = i;
      pr[stored] = i == j ? 2.0 : -1.0;
    }
    jc[j + 1] = stored;
  }
  return matrix;
}

static double dot(const double* a, const double* b) {
  double sum = 0.0;
  for (int i = 0; i < POINTS; ++i) sum += a[i] * b[i];
  return sum;
}

/* The product of A and the step, POINTS doubles; null if the call failed or returned anything else.
 */
static hcyArray* multiply(const Server* server, const hcyArray* matrix, const hcyArray* vector) {
  hcyArray* product = NULL;
  const hcyArray* inputs[] = {matrix, vector};
  if (server->runtime->feval(server->context, server->url, 1, &product, 2, inputs) != 0)
    return NULL;
  if (hcyGetPr(product) != NULL && !hcyIsSparse(product) &&
      hcyGetNumberOfElements(product) == POINTS)
    return product;
  hcyDestroyArray(product);
  return NULL;
}

/* Fills x; returns 0 if x is then the solution. The direction is sent in every step, so it is an
 * array whose elements are changed in place. */
static int solve(const Server* server, double* x) {
  double residual[POINTS];
  hcyArray* matrix = secondDifference();
  hcyArray* direction = hcyCreateDoubleMatrix(POINTS, 1, hcyREAL);
  double* p = hcyGetPr(direction);
  int failed = 0;
  for (int i = 0; i < POINTS; ++i) x[i] = 0.0, residual[i] = p[i] = 1.0;
  double square = dot(residual, residual);
  for (int step = 0; step < 2 * POINTS && square > 1e-20 && !failed; ++step) {
    hcyArray* product = multiply(server, matrix, direction);
    failed = product == NULL;
    if (failed) break;
    const double* q = hcyGetPr(product);
    const double length = square / dot(p, q);
    for (int i = 0; i < POINTS; ++i) x[i] += length * p[i], residual[i] -= length * q[i];
    hcyDestroyArray(product);
    const double next = dot(residual, residual);
    for (int i = 0; i < POINTS; ++i) p[i] = residual[i] + next / square * p[i];
    square = next;
  }
  hcyDestroyArray(matrix);
  hcyDestroyArray(direction);
  return failed || square > 1e-20;
}

int main(int argc, char** argv) {
  double x[POINTS], error = 0.0;
  Server server = {hcyInitializeEx(HCY_CLIENT_RUNTIME_1_1), NULL, NULL, ""};
  if (argc != 2 || server.runtime == NULL || server.runtime->createConfig(&server.config) != 0 ||
      server.runtime->createContext(&server.context, server.config) != 0)
    return EXIT_FAILURE;
  snprintf(server.url, sizeof server.url, "%s/sparse/multiply", argv[1]);
  const int failed = solve(&server, x);
  for (int i = 0; !failed && i < POINTS; ++i) {
    error = fmax(error, fabs(x[i] - 0.5 * (i + 1) * (POINTS - i)));
  }
  if (!failed) printf("x[0] = %.6f, x[%d] = %.6f\n", x[0], POINTS / 2, x[POINTS / 2]);
  printf(failed ? "no solution\n" : error < 1e-9 ? "exact to 9 digits\n" : "inexact\n");
  server.runtime->destroyContext(server.context);
  server.runtime->destroyConfig(server.config);
  hcyTerminate();
  return failed ? EXIT_FAILURE : EXIT_SUCCESS;
}
