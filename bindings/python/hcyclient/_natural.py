# SPDX-License-Identifier: Apache-2.0
"""Values as Python's users expect them: numbers, vectors, strings, dictionaries and lists."""
from __future__ import annotations

from ctypes import c_double, c_float, c_int8, c_int16, c_int32, c_int64, c_uint8, c_uint16
from ctypes import c_uint32, c_uint64
from typing import Any, Callable

import numpy as np

from ._library import Handle, get_class, get_data, get_dimension_count, get_element_count
from ._library import is_complex, is_sparse
from ._outputs import ExactReader, Shape, code_units, decoded, empty, field_names
from ._outputs import number_array
from ._storage import CHAR_UNIT, DTYPES, view


_IN_C: list[Any] = [c_uint8, c_int8, c_uint16, c_int16, c_uint32, c_int32, c_uint64, c_int64,
                    c_float, c_double]
# How one element of each class is read, and its type in NumPy.
_SCALARS: dict[int, tuple[Callable[[int], Any], Callable[[Any], Any]]] = {
    number: (kind.from_address, dtype.type)
    for number, (kind, dtype) in enumerate(zip(_IN_C, DTYPES))}


def _is_vector(shape: Shape) -> bool:
    return len(shape) == 2 and 1 in shape


class NaturalReader(ExactReader):
    """Gives up the difference between rows, columns and lists."""

    def value_of(self, handle: Handle) -> Any:
        # Most elements of containers are single numbers: no array is made for those.
        scalar = _SCALARS.get(get_class(handle))
        if scalar is not None and get_element_count(handle) == 1 and not (
                is_complex(handle) or is_sparse(handle)):
            address = get_data(handle)
            if address and get_dimension_count(handle) <= 2:
                at, kind = scalar
                return kind(at(address).value)
        return super().value_of(handle)

    def numbers(self, handle: Handle, number: int, shape: Shape, count: int) -> Any:
        array = number_array(handle, number, shape, count)
        if not _is_vector(shape):
            return array
        return array[0, 0] if count == 1 else array.reshape(-1)

    def text(self, handle: Handle, shape: Shape, count: int) -> Any:
        """A matrix of characters is an array of strings, without the blanks and NULs that make
        its rows equally long."""
        if len(shape) > 2 or shape[0] == 1 or shape == (0, 0):
            return super().text(handle, shape, count)
        if count == 0:
            empty(shape, 'U1')  # refuses what no array may have
            return np.broadcast_to(np.array('', 'U1'), shape[:1])  # which takes no memory
        units = view(handle, code_units(handle, count), shape, CHAR_UNIT)
        return np.array([decoded(row.tobytes()).rstrip('\0 ') for row in units])

    def is_list(self, shape: Shape) -> bool:
        return _is_vector(shape)

    def structs(self, handle: Handle, shape: Shape, count: int) -> Any:
        """One is a dictionary, any other number a list of dictionaries, column after column.
        Without fields they are as in the exact reader, since a list of them would take memory that
        nothing of the reply stands for."""
        names = field_names(handle)
        if shape == (1, 1) or not names:
            return super().structs(handle, shape, count)
        return self.dictionaries(handle, names, shape, count)
