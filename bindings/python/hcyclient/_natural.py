# SPDX-License-Identifier: Apache-2.0
"""Results in the usual Python types: numbers, vectors, strings, dictionaries and lists."""
from __future__ import annotations

from ctypes import c_double, c_float, c_int8, c_int16, c_int32, c_int64, c_uint8, c_uint16
from ctypes import c_uint32, c_uint64, string_at
from operator import attrgetter
from typing import Any, Callable, Iterable, Iterator

import numpy as np

from ._library import CHAR, LOGICAL, Handle, get_chars, get_class, get_data, get_dimension_count
from ._library import get_element_count, get_logicals, get_row_count, is_complex, is_sparse
from ._outputs import ExactReader, Shape, code_units, decoded, empty, field_names
from ._outputs import number_array
from ._storage import CHAR_UNIT, DTYPES, view


_IN_C: list[Any] = [c_uint8, c_int8, c_uint16, c_int16, c_uint32, c_int32, c_uint64, c_int64,
                    c_float, c_double]
# For each class: the address of the storage, how to read one element, and its NumPy type.
_SCALARS: dict[int, tuple[Callable[[Handle], Any], Callable[[int], Any], Callable[[Any], Any]]] = {
    number: (get_data, kind.from_address, dtype.type)
    for number, (kind, dtype) in enumerate(zip(_IN_C, DTYPES))}
_SCALARS[LOGICAL] = get_logicals, c_uint8.from_address, np.bool_
_value = attrgetter('value')


def _is_vector(shape: Shape) -> bool:
    return len(shape) == 2 and 1 in shape


def _are_scalars(elements: list[Handle], number: int) -> bool:
    """Whether each element is a single real number of this class, with at most two dimensions."""
    return (set(map(get_class, elements)) == {number}
            and set(map(get_element_count, elements)) == {1}
            and not any(map(is_complex, elements)) and not any(map(is_sparse, elements))
            and max(map(get_dimension_count, elements)) <= 2)


def _are_strings(elements: list[Handle]) -> bool:
    """Whether each element is a row of characters, or empty, with at most two dimensions."""
    return (set(map(get_class, elements)) == {CHAR}
            and set(map(get_row_count, elements)) <= {0, 1}
            and max(map(get_dimension_count, elements)) <= 2)


class NaturalReader(ExactReader):
    """Does not distinguish rows, columns and lists."""

    def value_of(self, handle: Handle) -> Any:
        # Most elements of containers are single numbers, which do not need an array.
        scalar = _SCALARS.get(get_class(handle))
        if scalar is not None and get_element_count(handle) == 1 and not (
                is_complex(handle) or is_sparse(handle)):
            address_of, at, kind = scalar
            address = address_of(handle)
            if address and get_dimension_count(handle) <= 2:
                return kind(at(address).value)
        return super().value_of(handle)

    def column(self, elements: list[Handle], count: int) -> Iterable[Any]:
        """Many single numbers of one class, or many strings, are read together, since a loop takes
        longer."""
        if len(elements) > 1 and all(elements):
            number = get_class(elements[0])
            if number in _SCALARS and _are_scalars(elements, number):
                address_of, at, kind = _SCALARS[number]
                addresses = [*map(address_of, elements)]
                if all(addresses):
                    return [*map(kind, map(_value, map(at, addresses)))]
            elif number == CHAR and _are_strings(elements):
                return self.strings(elements)
        return super().column(elements, count)

    def strings(self, elements: list[Handle]) -> Iterator[str]:
        for handle, count, address in zip(elements, map(get_element_count, elements),
                                          map(get_chars, elements)):
            yield (decoded(string_at(address, count * CHAR_UNIT.itemsize)) if address
                   else self.value_of(handle))

    def numbers(self, handle: Handle, number: int, shape: Shape, count: int) -> Any:
        array = number_array(handle, number, shape, count)
        if not _is_vector(shape):
            return array
        return array[0, 0] if count == 1 else array.reshape(-1)

    def text(self, handle: Handle, shape: Shape, count: int) -> Any:
        """A character matrix becomes an array of strings, without the blanks and NULs that pad its
        rows."""
        if len(shape) > 2 or shape[0] == 1 or shape == (0, 0):
            return super().text(handle, shape, count)
        if count == 0:
            empty(shape, 'U1')  # raises if NumPy has no array of this shape
            return np.broadcast_to(np.array('', 'U1'), shape[:1])  # which takes no memory
        units = view(handle, code_units(handle, count), shape, CHAR_UNIT)
        return np.array([decoded(row.tobytes()).rstrip('\0 ') for row in units])

    def is_list(self, shape: Shape) -> bool:
        return _is_vector(shape)

    def structs(self, handle: Handle, shape: Shape, count: int) -> Any:
        """One struct becomes a dictionary; any other number becomes a list of dictionaries, column
        by column. Structs without fields are as in the exact reader: a few bytes of a reply can
        announce any number of them, and a list would take memory for each."""
        names = field_names(handle)
        if shape == (1, 1) or not names:
            return super().structs(handle, shape, count)
        return self.dictionaries(handle, names, shape, count)
