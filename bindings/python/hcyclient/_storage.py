# SPDX-License-Identifier: Apache-2.0
"""NumPy arrays over the storage of the library's arrays."""
from __future__ import annotations

import math
from ctypes import c_size_t
from typing import TYPE_CHECKING, Any, Sequence

import numpy as np

from . import _library as library

if TYPE_CHECKING:
    NDArray = np.ndarray[Any, Any]
else:
    NDArray = np.ndarray  # NumPy before 1.22 cannot subscript it
Shape = Sequence[int]

# In the order of the class numbers, up to logical.
DTYPES = [np.dtype(name) for name in ('uint8', 'int8', 'uint16', 'int16', 'uint32', 'int32',
                                      'uint64', 'int64', 'float32', 'float64', 'bool')]
CHAR_UNIT = np.dtype('uint16')
SIZE = np.dtype(c_size_t)


class Storage:
    """Presents an array's storage to NumPy, which keeps this object alive as long as its views."""

    __slots__ = ('__array_interface__', 'owner')
    __array_interface__: dict[str, Any]
    owner: Any


_TYPE_NAMES = {dtype: dtype.str for dtype in [*DTYPES, CHAR_UNIT, SIZE]}


def view(owner: Any, address: int, shape: Shape, dtype: np.dtype[Any]) -> NDArray:
    """A view, in column-major order, of the elements at the address, which belong to the owner.
    There must be at least one, and storage for all of them."""
    step = dtype.itemsize
    strides = []
    for dimension in shape:
        strides.append(step)
        step *= dimension
    storage = Storage()
    storage.owner = owner
    storage.__array_interface__ = {
        'version': 3, 'typestr': _TYPE_NAMES[dtype], 'shape': tuple(shape),
        'strides': tuple(strides), 'data': (address, False)}
    return np.asarray(storage)


def resize(handle: library.Handle, shape: Shape) -> bool:
    """Give the array this shape. Returns False if that is not possible. The functions that create
    arrays, and hcySetM, would throw a C++ exception instead, which Python cannot catch."""
    count = len(shape)
    return not library.set_dimensions(handle, (c_size_t * count)(*shape), count)


def require_memory(elements: int) -> None:
    """Raise MemoryError if the library would throw a C++ exception, which Python cannot catch."""
    np.empty(elements, SIZE)


def element_count(shape: Shape) -> int:
    return math.prod(shape)
