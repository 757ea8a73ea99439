# SPDX-License-Identifier: Apache-2.0
"""Numbers, booleans and strings, written once, straight into the storage of a new array."""
from __future__ import annotations

import sys
from ctypes import c_size_t, memmove
from typing import Any, Callable

import numpy as np

from . import _library as library
from ._library import COMPLEX, LARGEST_SIZE, LOGICAL, REAL, Handle
from ._refusal import CannotConvert, array_of
from ._sequences import double_of
from ._storage import CHAR_UNIT, DTYPES, NDArray, Shape, element_count, resize, view

UTF16 = 'utf-16-le' if sys.byteorder == 'little' else 'utf-16-be'
# Up to this many elements, an array is created in one step. Creating a larger one could throw.
_FEW = 4096
_CLASSES: dict[str, int] = {dtype.char: number for number, dtype in enumerate(DTYPES)}
# C has two type codes for integers of 64 bits.
_CLASSES.update({code: _CLASSES[np.dtype(f'{kind}{np.dtype(code).itemsize}').char]
                 for kind, codes in (('i', 'bhilq'), ('u', 'BHILQ')) for code in codes})
_PART_CLASSES = {'F': library.SINGLE, 'D': library.DOUBLE}


def matrix_shape(shape: Shape) -> Shape:
    """At least two dimensions: a vector is a column."""
    return shape if len(shape) > 1 else (shape[0] if shape else 1, 1)


def sized(handle: Handle, shape: Shape) -> Handle:
    """Resize a 1-by-1 array to the shape, and return it."""
    if len(shape) == 2 and shape[0] == 1 and shape[1] == 1:
        return handle
    if max(shape) > LARGEST_SIZE or not resize(handle, shape):
        if max(shape) > LARGEST_SIZE or element_count(shape) > LARGEST_SIZE:
            raise CannotConvert(f'array of shape {tuple(shape)}: it is too large',
                                'several calls, each with a part of it')
        raise MemoryError
    return handle


def _created(shape: Shape, create: Callable[..., Handle], *kind: int) -> Handle:
    if len(shape) == 2 and 0 < shape[0] * shape[1] <= _FEW:
        return create(shape[0], shape[1], *kind)
    return sized(create(1, 1, *kind), shape)


def _write(handle: Handle, address: int, shape: Shape, dtype: np.dtype[Any], parts: NDArray
           ) -> None:
    np.copyto(view(handle, address, shape, dtype),
              parts if parts.ndim > 1 else parts.reshape(shape), casting='same_kind')


def numeric_array(value: NDArray) -> Handle:
    """An array of any dtype that has a class in the library."""
    number = _CLASSES.get(value.dtype.char)
    if value.dtype.char == 'e':  # half precision becomes single
        return numeric_array(value.astype(np.float32))
    if number is None:
        return _complex_array(value)
    shape = matrix_shape(value.shape)
    if number == LOGICAL:
        handle = _created(shape, library.create_logical)
        address = library.get_logicals(handle)
    else:
        handle = _created(shape, library.create_numeric, number, REAL)
        address = library.get_data(handle)
    if address:
        _write(handle, address, shape, DTYPES[number], value)
    return handle


def is_complex_integer(dtype: np.dtype[Any]) -> bool:
    """Whether complex_dtype() makes such a dtype."""
    return (dtype.names == ('real', 'imag') and dtype['real'] == dtype['imag']
            and dtype['real'].kind in 'iu')


def _complex_array(value: NDArray) -> Handle:
    dtype = value.dtype
    if dtype.char in _PART_CLASSES:
        number, real, imaginary = _PART_CLASSES[dtype.char], value.real, value.imag
    elif is_complex_integer(dtype):
        number, real, imaginary = _CLASSES[dtype['real'].char], value['real'], value['imag']
    else:
        raise array_of(dtype)
    shape = matrix_shape(value.shape)
    handle = _created(shape, library.create_numeric, number, COMPLEX)
    if value.size:
        _write(handle, library.get_data(handle), shape, DTYPES[number], real)
        _write(handle, library.get_imaginary(handle), shape, DTYPES[number], imaginary)
    return handle


def real_scalar(value: float) -> Handle:
    handle: Handle = library.create_double_scalar(value)
    return handle


def integer_scalar(value: int) -> Handle:
    return real_scalar(double_of(value))


def logical_scalar(value: bool) -> Handle:
    handle: Handle = library.create_logical_scalar(value)
    return handle


def nothing(_: None) -> Handle:
    handle: Handle = library.create_numeric(0, 0, library.DOUBLE, REAL)
    return handle


def scalar(value: Any) -> Handle:
    """A number of a type that NumPy converts."""
    return numeric_array(np.asarray(value))


def _new_text(shape: Shape) -> Handle:
    return sized(library.create_char(2, (c_size_t * 2)(1, 1)), shape)


def text(value: str) -> Handle:
    """A row of UTF-16 code units; 0-by-0 for the empty string."""
    units = value.encode(UTF16, 'surrogatepass')
    count = len(units) // CHAR_UNIT.itemsize
    handle = _new_text((1, count) if count else (0, 0))
    if count:
        memmove(library.get_chars(handle), units, len(units))
    return handle


def _code_points(value: NDArray) -> NDArray:
    return np.ascontiguousarray(value, value.dtype.newbyteorder('=')).view(np.uint32)


def _code_units(value: NDArray) -> NDArray:
    """The UTF-16 code units of an array of single characters."""
    points = _code_points(value)
    if points.size and points.max() > np.iinfo(CHAR_UNIT).max:
        raise CannotConvert('array of single characters, one of which takes two code units',
                            'a one-dimensional array of strings')
    return points.astype(CHAR_UNIT)


def _rows_of_units(value: NDArray) -> NDArray:
    """A string in each row, padded with NUL."""
    rows = [np.frombuffer(item.encode(UTF16, 'surrogatepass'), CHAR_UNIT)
            for item in value.tolist()]
    units = np.zeros((len(rows), max(map(len, rows), default=0)), CHAR_UNIT)
    for target, row in zip(units, rows):
        target[:len(row)] = row
    return units


def text_array(value: NDArray) -> Handle:
    """A row for each string of a one-dimensional array, or an array of single characters."""
    if value.size and value.dtype.itemsize and _code_points(value).max() > sys.maxunicode:
        raise CannotConvert('array of strings with a code point that is not a Unicode character',
                            ".view('uint32')")
    if value.ndim == 0:
        return text(value.item())
    if value.ndim == 1:
        units = _rows_of_units(value)
    elif value.dtype.itemsize == np.dtype('U1').itemsize:
        units = _code_units(value)
    else:
        raise CannotConvert(f'array of dtype {value.dtype} with {value.ndim} dimensions: strings '
                            'of more than one character must be in a one-dimensional array',
                            '.astype(object) for a cell array')
    handle = _new_text(units.shape)
    if units.size:
        _write(handle, library.get_chars(handle), units.shape, CHAR_UNIT, units)
    return handle
