# SPDX-License-Identifier: Apache-2.0
"""Makes values of Python from arrays that a call returned.

What a server sent may be out of step: storage with fewer elements than the dimensions say, or
dimensions that no reply could fill.
"""
from __future__ import annotations

import ctypes
from typing import Any, Tuple

import numpy as np

from . import _library as library
from ._budget import Budget
from ._dense_inputs import UTF16
from ._library import Handle
from ._malformed import malformed
from ._sparse import sparse_value
from ._storage import CHAR_UNIT, DTYPES, NDArray, element_count, resize, view
from ._values import Cell, complex_dtype

Shape = Tuple[int, ...]
_COMPLEX_DTYPES = [complex_dtype(dtype) for dtype in DTYPES[:library.SINGLE]] + [
    np.dtype(np.complex64), np.dtype(np.complex128)]
_MOST_DIMENSIONS: int = getattr(np, 'MAXDIMS', 64)  # NumPy 2 does not name them any more


def value_of(handle: Handle, budget: Budget) -> Any:
    number = library.get_class(handle)
    shape = _shape(handle)
    if number in (library.DOUBLE, library.LOGICAL) and library.is_sparse(handle):
        return sparse_value(handle, shape, budget)
    count = element_count(shape)
    if number == library.STRUCT:
        return _structs(handle, shape, count, budget)
    budget.take(count, shape)
    if number == library.CELL:
        return _cells(handle, shape, count, budget)
    if count and not resize(handle, shape):
        raise MemoryError
    if number == library.CHAR:
        return _text(handle, shape, count)
    return _numbers(handle, number, shape, count)


def _shape(handle: Handle) -> Shape:
    """Of two dimensions at least."""
    count = library.get_dimension_count(handle)
    if count > _MOST_DIMENSIONS:
        raise malformed(f'an array of {count} dimensions; NumPy takes {_MOST_DIMENSIONS}')
    shape = tuple(library.get_dimensions(handle)[:count]) if count else (0, 0)
    return shape if count != 1 else (shape[0], 1)


def _numbers(handle: Handle, number: int, shape: Shape, count: int) -> Any:
    dtype = DTYPES[number]
    if count == 0:
        return None if number == library.DOUBLE and shape == (0, 0) else _empty(shape, dtype)
    if number == library.LOGICAL:
        return view(handle, library.get_logicals(handle), shape, dtype)
    real = view(handle, library.get_data(handle), shape, dtype)
    imaginary = library.get_imaginary(handle)
    if imaginary:
        return _complex_numbers(number, real, view(handle, imaginary, shape, dtype))
    return real


def _empty(shape: Shape, dtype: Any) -> NDArray:
    try:
        return np.empty(shape, dtype, order='F')
    except ValueError:  # the other dimensions are too large
        raise malformed(f'an array of shape {shape}') from None


def _complex_numbers(number: int, real: NDArray, imaginary: NDArray) -> NDArray:
    """A copy: NumPy keeps both parts of a number side by side, the library apart."""
    dtype = _COMPLEX_DTYPES[number]
    values = np.empty(real.shape, dtype, order='F')
    if dtype.kind == 'c':
        values.real, values.imag = real, imaginary
    else:
        values['real'], values['imag'] = real, imaginary
    return values


def _text(handle: Handle, shape: Shape, count: int) -> Any:
    """A row, and what is 0-by-0, is a text; anything else an array of characters."""
    if len(shape) == 2 and (shape[0] == 1 or shape == (0, 0)):
        if count == 0:
            return ''
        units = ctypes.string_at(library.get_chars(handle), count * CHAR_UNIT.itemsize)
        return units.decode(UTF16, 'surrogatepass')
    if count == 0:
        return _empty(shape, 'U1')
    points = view(handle, library.get_chars(handle), shape, CHAR_UNIT).astype(np.uint32, order='F')
    return points.view('U1')


def _element(element: Handle, budget: Budget) -> Any:
    if not element:
        raise malformed('a container without one of its elements')
    return value_of(element, budget)


def _cells(handle: Handle, shape: Shape, count: int, budget: Budget) -> Any:
    """A row, and what is 0-by-0, is a list; anything else an array of objects."""
    get = library.get_cell
    if len(shape) == 2 and (shape[0] == 1 or shape == (0, 0)):
        return Cell([_element(get(handle, i), budget) for i in range(count)])
    cells = _empty((count,), object) if count else _empty(shape, object)
    for i in range(count):
        cells[i] = _element(get(handle, i), budget)
    return cells.reshape(shape, order='F')


def _structs(handle: Handle, shape: Shape, count: int, budget: Budget) -> Any:
    """One is a dictionary, several in a row are a list of dictionaries; anything else, and what
    has no fields, is a structured array."""
    names = _field_names(handle)
    budget.take(count * max(len(names), 1), shape)
    if shape == (1, 1):
        return _struct(handle, 0, names, budget)
    if len(shape) == 2 and shape[0] == 1 and count and names:
        return [_struct(handle, i, names, budget) for i in range(count)]
    dtype = np.dtype({'names': list(names), 'formats': [object] * len(names)})
    structs = _empty((count,), dtype) if count else _empty(shape, dtype)
    for i in range(count if names else 0):
        structs[i] = tuple(_struct(handle, i, names, budget).values())
    return structs.reshape(shape, order='F')


def _struct(handle: Handle, index: int, names: dict[str, int], budget: Budget) -> dict[str, Any]:
    return {name: _element(library.get_field(handle, index, number), budget)
            for name, number in names.items()}


def _field_names(handle: Handle) -> dict[str, int]:
    """With their numbers. A server may send several fields with one name, of which the library
    gives the first."""
    return {library.get_field_name(handle, number).decode(errors='surrogateescape'): number
            for number in range(library.get_field_count(handle))}
