/* SPDX-License-Identifier: Apache-2.0
 *
 * Every class: sends an array of each class to the server's echo and prints the result.
 *
 * Usage: classes SERVER_URL
 */
#include <hcy/hcyclient.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { ARRAYS = 17, URL_LENGTH = 512 };

/* A row of a numeric class: `values` holds `count` elements of that class. */
static hcyArray* row(hcyClassID class, size_t count, const void* values) {
  hcyArray* array = hcyCreateNumericMatrix(1, count, class, hcyREAL);
  memcpy(hcyGetData(array), values, count * hcyGetElementSize(array));
  return array;
}

static hcyArray* complexRow(void) {
  hcyArray* array = hcyCreateDoubleMatrix(1, 2, hcyCOMPLEX);
  hcyGetPr(array)[0] = 1.0, hcyGetPi(array)[0] = 2.0;
  hcyGetPr(array)[1] = 3.0, hcyGetPi(array)[1] = -4.0;
  return array;
}

/* 2-by-2-by-2, filled in the order of the storage: the row index changes fastest. */
static hcyArray* cube(void) {
  const size_t dims[] = {2, 2, 2};
  hcyArray* array = hcyCreateNumericArray(3, dims, hcyDOUBLE_CLASS, hcyREAL);
  for (int i = 0; i < 8; ++i) hcyGetPr(array)[i] = i;
  return array;
}

static hcyArray* logicalRow(void) {
  hcyArray* array = hcyCreateLogicalMatrix(1, 2);
  hcyGetLogicals(array)[0] = true;
  return array;
}

/* hcyCreateString() takes ASCII; other text is written as UTF-16. */
static hcyArray* text(void) {
  static const uint16_t units[] = {'Z', 0xFC, 'r', 'i', 'c', 'h'};
  const size_t dims[] = {1, 6};
  hcyArray* array = hcyCreateCharArray(2, dims);
  memcpy(hcyGetChars(array), units, sizeof units);
  return array;
}

/* Compressed columns: the rows and values of all stored elements, and the start of each column. */
static hcyArray* sparseMatrix(void) {
  hcyArray* array = hcyCreateSparse(3, 3, 2, hcyREAL);
  hcyGetIr(array)[0] = 0, hcyGetPr(array)[0] = 1.5;
  hcyGetIr(array)[1] = 2, hcyGetPr(array)[1] = -2.5;
  hcyGetJc(array)[1] = 1, hcyGetJc(array)[2] = 1, hcyGetJc(array)[3] = 2;
  return array;
}

static hcyArray* sparseLogical(void) {
  hcyArray* array = hcyCreateSparseLogicalMatrix(2, 2, 1);
  hcyGetIr(array)[0] = 1, hcyGetLogicals(array)[0] = true;
  hcyGetJc(array)[1] = 1, hcyGetJc(array)[2] = 1;
  return array;
}

/* The containers share what is stored in them; we still destroy our handles. */
static hcyArray* cell(void) {
  hcyArray* array = hcyCreateCellMatrix(1, 2);
  hcyArray *number = hcyCreateDoubleScalar(1.0), *word = hcyCreateString("two");
  hcySetCell(array, 0, number), hcySetCell(array, 1, word);
  hcyDestroyArray(number), hcyDestroyArray(word);
  return array;
}

static hcyArray* structure(void) {
  const char* const fields[] = {"name", "size"};
  hcyArray* array = hcyCreateStructMatrix(1, 1, 2, fields);
  hcyArray *name = hcyCreateString("box"), *size = hcyCreateDoubleScalar(3.0);
  hcySetField(array, 0, "name", name), hcySetField(array, 0, "size", size);
  hcyDestroyArray(name), hcyDestroyArray(size);
  return array;
}

static void makeArrays(hcyArray** arrays) {
  arrays[0] = row(hcyUINT8_CLASS, 2, (uint8_t[]){0, UINT8_MAX});
  arrays[1] = row(hcyINT8_CLASS, 2, (int8_t[]){INT8_MIN, INT8_MAX});
  arrays[2] = row(hcyUINT16_CLASS, 2, (uint16_t[]){0, UINT16_MAX});
  arrays[3] = row(hcyINT16_CLASS, 2, (int16_t[]){INT16_MIN, INT16_MAX});
  arrays[4] = row(hcyUINT32_CLASS, 2, (uint32_t[]){0, UINT32_MAX});
  arrays[5] = row(hcyINT32_CLASS, 2, (int32_t[]){INT32_MIN, INT32_MAX});
  arrays[6] = row(hcyUINT64_CLASS, 2, (uint64_t[]){0, UINT64_MAX});
  arrays[7] = row(hcyINT64_CLASS, 2, (int64_t[]){INT64_MIN, INT64_MAX});
  arrays[8] = row(hcySINGLE_CLASS, 2, (float[]){0.5F, -1.25F});
  arrays[9] = complexRow();
  arrays[10] = cube();
  arrays[11] = logicalRow();
  arrays[12] = text();
  arrays[13] = sparseMatrix();
  arrays[14] = sparseLogical();
  arrays[15] = cell();
  arrays[16] = structure();
}

static void printNumber(hcyClassID class, const void* data, size_t i) {
  switch (class) {
    case hcyUINT8_CLASS:
      printf(" %u", (unsigned)((const uint8_t*)data)[i]);
      break;
    case hcyINT8_CLASS:
      printf(" %d", (int)((const int8_t*)data)[i]);
      break;
    case hcyUINT16_CLASS:
      printf(" %u", (unsigned)((const uint16_t*)data)[i]);
      break;
    case hcyINT16_CLASS:
      printf(" %d", (int)((const int16_t*)data)[i]);
      break;
    case hcyUINT32_CLASS:
      printf(" %lu", (unsigned long)((const uint32_t*)data)[i]);
      break;
    case hcyINT32_CLASS:
      printf(" %ld", (long)((const int32_t*)data)[i]);
      break;
    case hcyUINT64_CLASS:
      printf(" %llu", (unsigned long long)((const uint64_t*)data)[i]);
      break;
    case hcyINT64_CLASS:
      printf(" %lld", (long long)((const int64_t*)data)[i]);
      break;
    case hcySINGLE_CLASS:
      printf(" %g", (double)((const float*)data)[i]);
      break;
    default:
      printf(" %g", ((const double*)data)[i]);
  }
}

static void printHead(const hcyArray* array) {
  printf("%s%s", hcyIsSparse(array) ? "sparse " : "", hcyGetClassName(array));
  for (size_t i = 0; i < hcyGetNumberOfDimensions(array); ++i) {
    printf("%s%zu", i == 0 ? " " : "-by-", hcyGetDimensions(array)[i]);
  }
  printf("%s:", hcyIsComplex(array) ? " complex" : "");
}

/* Pointers are null if elements or indices of a reply did not arrive. */
static void printSparse(const hcyArray* array) {
  const size_t *ir = hcyGetIr(array), *jc = hcyGetJc(array);
  const bool* logicals = hcyGetLogicals(array);
  const double* numbers = hcyGetPr(array);
  if (jc == NULL || (jc[hcyGetN(array)] > 0 && logicals == NULL && numbers == NULL)) {
    printf(" incomplete");
    return;
  }
  for (size_t j = 0; j < hcyGetN(array); ++j) {
    for (size_t i = jc[j]; i < jc[j + 1]; ++i) {
      printf(" (%zu, %zu)", ir[i], j);
      if (logicals != NULL)
        printf(" %s", logicals[i] ? "true" : "false");
      else
        printNumber(hcyDOUBLE_CLASS, numbers, i);
    }
  }
}

static void printNumbers(const hcyArray* array, const void* data) {
  const size_t count = hcyGetNumberOfElements(array);
  if (data == NULL && count > 0) printf(" incomplete");
  for (size_t i = 0; data != NULL && i < count; ++i) {
    printNumber(hcyGetClassID(array), data, i);
  }
}

static void printLogicals(const hcyArray* array) {
  const bool* logicals = hcyGetLogicals(array);
  const size_t count = hcyGetNumberOfElements(array);
  if (logicals == NULL && count > 0) printf(" incomplete");
  for (size_t i = 0; logicals != NULL && i < count; ++i) printf(logicals[i] ? " true" : " false");
}

static void printContents(const hcyArray* array);

/* Returns whether the element arrived. */
static bool printElement(hcyArray* element) {
  if (element == NULL) {
    printf(" incomplete");
    return false;
  }
  printf(" ");
  printHead(element);
  printContents(element);
  printf(";");
  hcyDestroyArray(element);
  return true;
}

static void printContents(const hcyArray* array) {
  if (hcyIsSparse(array)) {
    printSparse(array);
  } else if (hcyIsNumeric(array)) {
    printNumbers(array, hcyGetData(array));
    if (hcyIsComplex(array)) {
      printf(" and");
      printNumbers(array, hcyGetImagData(array));
    }
  } else if (hcyIsLogical(array)) {
    printLogicals(array);
  } else if (hcyIsChar(array)) {
    char* utf8 = hcyArrayToString(array);
    printf(" %s", utf8 == NULL ? "" : utf8);
    hcyFree(utf8);
  } else if (hcyIsCell(array)) {
    const size_t count = hcyGetNumberOfElements(array);
    for (size_t i = 0; i < count; ++i) {
      if (!printElement(hcyGetCell(array, i))) break;
    }
  } else {
    for (int f = 0; f < hcyGetNumberOfFields(array); ++f) {
      printf(" %s =", hcyGetFieldNameByNumber(array, f));
      if (!printElement(hcyGetFieldByNumber(array, 0, f))) break;
    }
  }
}

int main(int argc, char** argv) {
  char url[URL_LENGTH];
  hcyArray *arrays[ARRAYS], *echoed[ARRAYS] = {NULL};
  hcyClientConfig* config = NULL;
  hcyClientContext* context = NULL;
  hcyClientRuntime* runtime = hcyInitializeEx(HCY_CLIENT_RUNTIME_1_1);
  if (argc != 2 || runtime == NULL || runtime->createConfig(&config) != 0 ||
      runtime->createContext(&context, config) != 0)
    return EXIT_FAILURE;
  snprintf(url, sizeof url, "%s/echo", argv[1]);
  makeArrays(arrays);
  const int failed =
      runtime->feval(context, url, ARRAYS, echoed, ARRAYS, (const hcyArray* const*)arrays);
  for (int i = 0; i < ARRAYS; ++i) {
    if (!failed) {
      printHead(echoed[i]);
      printContents(echoed[i]);
      printf("\n");
    }
    hcyDestroyArray(arrays[i]);
    hcyDestroyArray(echoed[i]);
  }
  runtime->destroyContext(context);
  runtime->destroyConfig(config);
  hcyTerminate();
  return failed ? EXIT_FAILURE : EXIT_SUCCESS;
}
