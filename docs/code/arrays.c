/* SPDX-License-Identifier: Apache-2.0
 *
 * How arrays lie in memory, and who owns what.
 */
#include <hcy/hcyclient.h>
#include <stdio.h>

static void columnMajor(void) {
  hcyArray* matrix = hcyCreateDoubleMatrix(2, 3, hcyREAL);
  double* elements = hcyGetPr(matrix);
  for (size_t j = 0; j < 3; ++j)
    for (size_t i = 0; i < 2; ++i) elements[i + j * 2] = 10.0 * i + j;

  size_t subscripts[] = {1, 2};
  size_t index = hcyCalcSingleSubscript(matrix, 2, subscripts);
  printf("element (1, 2) has index %zu and is %g\n", index, elements[index]);
  hcyDestroyArray(matrix);
}

static void resized(void) {
  hcyArray* row = hcyCreateDoubleMatrix(1, 2, hcyREAL);
  hcyGetPr(row)[1] = 7.0;
  hcySetN(row, 1000);               /* moves the elements: */
  double* elements = hcyGetPr(row); /* get the pointer again */
  printf("element 1 of %zu is %g\n", hcyGetNumberOfElements(row), elements[1]);
  hcyDestroyArray(row);
}

static void shared(void) {
  hcyArray* cell = hcyCreateCellMatrix(1, 2);
  hcyArray* number = hcyCreateDoubleScalar(1.0);
  hcySetCell(cell, 0, number);
  hcyGetPr(number)[0] = 2.0; /* visible through the cell */
  hcyDestroyArray(number);   /* the element lives on in the cell */

  hcyArray* element = hcyGetCell(cell, 0); /* a new handle, ours to destroy */
  hcyDestroyArray(cell);                   /* the element lives on with the handle */
  printf("the element is %g\n", hcyGetScalar(element));
  hcyDestroyArray(element);
}

static void storedAgain(void) {
  hcyArray* cell = hcyCreateCellMatrix(1, 1);
  hcyArray* text = hcyCreateString("cat");
  hcySetCell(cell, 0, text);
  hcyGetChars(text)[0] = 'h'; /* char, int16, uint16: each handle has its own contents ... */
  hcySetCell(cell, 0, text);  /* ... until it is stored */
  hcyDestroyArray(text);

  hcyArray* element = hcyGetCell(cell, 0);
  char* utf8 = hcyArrayToString(element); /* release it with hcyFree() */
  printf("the element is %s\n", utf8);
  hcyFree(utf8);
  hcyDestroyArray(element);
  hcyDestroyArray(cell);
}

int main(void) {
  columnMajor();
  resized();
  shared();
  storedAgain();
  return 0;
}
