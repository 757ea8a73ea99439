# SPDX-License-Identifier: Apache-2.0
"""Makes values of Python from arrays that a call returned.

What a server sent may be out of step: storage with fewer elements than the dimensions say, or
dimensions that no reply could fill. An element takes a byte of the reply at least, so that the limit
for the size of replies bounds the number of elements, too.
"""
from __future__ import annotations

import ctypes
from typing import Any, Tuple

import numpy as np

from . import _library as library
from ._dense_inputs import UTF16
from ._library import Handle
from ._malformed import malformed
from ._sparse import sparse_value
from ._storage import CHAR_UNIT, DTYPES, NDArray, element_count, resize, view
from ._values import Cell, complex_dtype

Shape = Tuple[int, ...]
_COMPLEX_DTYPES = [complex_dtype(dtype) for dtype in DTYPES[:library.SINGLE]] + [
    np.dtype(np.complex64), np.dtype(np.complex128)]


def value_of(handle: Handle, limit: int) -> Any:
    number = library.get_class(handle)
    shape = _shape(handle)
    if number in (library.DOUBLE, library.LOGICAL) and library.is_sparse(handle):
        return sparse_value(handle, shape, limit)
    count = element_count(shape)
    _require_in_limit(count, shape, limit)
    if number == library.STRUCT:
        return _structs(handle, shape, count, limit)
    if number == library.CELL:
        return _cells(handle, shape, count, limit)
    if count and not resize(handle, shape):
        raise MemoryError
    if number == library.CHAR:
        return _text(handle, shape, count)
    return _numbers(handle, number, shape, count)


def _require_in_limit(count: int, shape: Shape, limit: int) -> None:
    if count > limit:
        raise malformed(f'an array of shape {shape}, which is larger than a reply may be')


def _shape(handle: Handle) -> Shape:
    """Of two dimensions at least."""
    count = library.get_dimension_count(handle)
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


def _element(element: Handle, limit: int) -> Any:
    if not element:
        raise malformed('a container without one of its elements')
    return value_of(element, limit)


def _cells(handle: Handle, shape: Shape, count: int, limit: int) -> Any:
    """A row, and what is 0-by-0, is a list; anything else an array of objects."""
    get = library.get_cell
    if len(shape) == 2 and (shape[0] == 1 or shape == (0, 0)):
        return Cell([_element(get(handle, i), limit) for i in range(count)])
    cells = _empty((count,), object) if count else _empty(shape, object)
    for i in range(count):
        cells[i] = _element(get(handle, i), limit)
    return cells.reshape(shape, order='F')


def _structs(handle: Handle, shape: Shape, count: int, limit: int) -> Any:
    """One is a dictionary, several in a row are a list of dictionaries; anything else, and what
    has no fields, is a structured array."""
    names = _field_names(handle)
    _require_in_limit(count * len(names), shape, limit)
    if shape == (1, 1):
        return _struct(handle, 0, names, limit)
    if len(shape) == 2 and shape[0] == 1 and count and names:
        return [_struct(handle, i, names, limit) for i in range(count)]
    dtype = np.dtype({'names': list(names), 'formats': [object] * len(names)})
    structs = _empty((count,), dtype) if count else _empty(shape, dtype)
    for i in range(count if names else 0):
        structs[i] = tuple(_struct(handle, i, names, limit).values())
    return structs.reshape(shape, order='F')


def _struct(handle: Handle, index: int, names: dict[str, int], limit: int) -> dict[str, Any]:
    return {name: _element(library.get_field(handle, index, number), limit)
            for name, number in names.items()}


def _field_names(handle: Handle) -> dict[str, int]:
    """With their numbers. A server may send several fields with one name, of which the library
    gives the first."""
    return {library.get_field_name(handle, number).decode(errors='surrogateescape'): number
            for number in range(library.get_field_count(handle))}
