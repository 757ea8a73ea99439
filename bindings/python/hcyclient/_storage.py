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
    NDArray = np.ndarray  # which NumPy before 1.22 cannot subscript
Shape = Sequence[int]

# In the order of the classes' numbers, up to logical.
DTYPES = [np.dtype(name) for name in ('uint8', 'int8', 'uint16', 'int16', 'uint32', 'int32',
                                      'uint64', 'int64', 'float32', 'float64', 'bool')]
CHAR_UNIT = np.dtype('uint16')
SIZE = np.dtype(c_size_t)


class Storage:
    """What NumPy sees of an array's storage, and keeps alive as long as it looks at it."""

    __slots__ = ('__array_interface__', 'owner')
    __array_interface__: dict[str, Any]
    owner: Any


_TYPE_NAMES = {dtype: dtype.str for dtype in [*DTYPES, CHAR_UNIT, SIZE]}


def view(owner: Any, address: int, shape: Shape, dtype: np.dtype[Any]) -> NDArray:
    """An array, in columns, over the elements at the address, which belong to the owner. All of
    them must be there, and one at least."""
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
    """Gives the array this shape; False where that is not possible. Unlike the functions that
    create arrays, and unlike hcySetM, this throws nothing that Python could not catch."""
    count = len(shape)
    return not library.set_dimensions(handle, (c_size_t * count)(*shape), count)


def require_memory(elements: int) -> None:
    """Raises MemoryError where the library would throw what Python cannot catch."""
    np.empty(elements, SIZE)


def element_count(shape: Shape) -> int:
    return math.prod(shape)
