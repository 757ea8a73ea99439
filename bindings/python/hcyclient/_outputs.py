# SPDX-License-Identifier: Apache-2.0
"""Converts the arrays that a call returned to Python values.

A reply may be incomplete, or truncated by the limit on its size. The library provides storage only
if all elements that the dimensions announce have arrived. So a value never holds anything else, and
dimensions alone never make it allocate memory.
"""
from __future__ import annotations

import ctypes
from itertools import repeat
from typing import Any, Iterable, Iterator, Tuple

import numpy as np

from . import _library as library
from ._dense_inputs import UTF16
from ._library import Handle
from ._sparse import sparse_value
from ._storage import CHAR_UNIT, DTYPES, NDArray, element_count, view
from ._unreadable import Unreadable, malformed, missing_element, missing_elements, no_dimensions
from ._urls import public
from ._values import Cell, complex_dtype

Shape = Tuple[int, ...]
_COMPLEX_DTYPES = [complex_dtype(dtype) for dtype in DTYPES[:library.SINGLE]] + [
    np.dtype(np.complex64), np.dtype(np.complex128)]
# Elements of containers are read in columns of up to this many.
_COLUMN = 1024
_MOST_DIMENSIONS: int = getattr(np, 'MAXDIMS', 64)  # NumPy 2 has no name for this


class ExactReader:
    """Keeps the shape of every array, as far as there is a Python type that shows it."""

    def values_of(self, outputs: list[Handle], url: bytes) -> list[Any]:
        """The value of each output. If one has none, a TransportError says which. All outputs are
        destroyed first: an exception that somebody keeps refers to the frames that it passed
        through, and they would keep the outputs."""
        values: list[Any] = []
        try:
            for output in outputs:
                values.append(self.value_of(output))
            return values
        except Unreadable as unreadable:
            kind, text = unreadable.kind, unreadable.text(len(values))
        outputs.clear()
        del values, output
        raise kind(text, public(url))

    def value_of(self, handle: Handle) -> Any:
        number = library.get_class(handle)
        shape = _shape(handle)
        count = element_count(shape)
        if number in (library.DOUBLE, library.LOGICAL) and library.is_sparse(handle):
            return sparse_value(handle, shape, count)
        if number == library.STRUCT:
            return self.structs(handle, shape, count)
        if number == library.CELL:
            return self.cells(handle, shape, count)
        if number == library.CHAR:
            return self.text(handle, shape, count)
        return self.numbers(handle, number, shape, count)

    def numbers(self, handle: Handle, number: int, shape: Shape, count: int) -> Any:
        if number == library.DOUBLE and shape == (0, 0):
            return None
        return number_array(handle, number, shape, count)

    def text(self, handle: Handle, shape: Shape, count: int) -> Any:
        """A row or a 0-by-0 array is a string; anything else is an array of characters."""
        is_string = is_row(shape) or shape == (0, 0)
        if count == 0:
            return '' if is_string else empty(shape, 'U1')
        if is_string:
            return decoded(ctypes.string_at(code_units(handle, count), count * CHAR_UNIT.itemsize))
        return characters(handle, shape, count)

    def is_list(self, shape: Shape) -> bool:
        """Whether a container of this shape becomes a list."""
        return is_row(shape)

    def cells(self, handle: Handle, shape: Shape, count: int) -> Any:
        """A list if the cell is a row or 0-by-0, otherwise an array of objects."""
        values: Cell[Any] = Cell()
        try:
            for indices in _columns(count):
                elements = [*map(library.get_cell, repeat(handle), indices)]
                for value in self.column(elements, count):
                    values.append(value)
        except Unreadable as unreadable:
            unreadable.inside(self.index(shape, len(values)))
            raise
        is_list = self.is_list(shape) or shape == (0, 0)
        return values if is_list else filled(values, shape, object)

    def structs(self, handle: Handle, shape: Shape, count: int) -> Any:
        """One struct is a dictionary, a row of them a list of dictionaries; any other shape, and
        structs without fields, are a structured array."""
        names = field_names(handle)
        if shape == (1, 1):
            return {name: value for name, number in names.items()
                    for value in self.field(handle, name, number, range(1), count)}
        if not names:
            return _structs_without_fields(shape, count)
        structs = self.dictionaries(handle, names, shape, count)
        if self.is_list(shape) and count:
            return structs
        return filled([tuple(struct.values()) for struct in structs], shape, struct_dtype(names))

    def dictionaries(self, handle: Handle, names: dict[str, int], shape: Shape, count: int
                     ) -> list[dict[str, Any]]:
        structs: list[dict[str, Any]] = []
        try:
            for indices in _columns(count):
                columns = [self.field(handle, name, number, indices, count)
                           for name, number in names.items()]
                for values in zip(*columns):
                    structs.append(dict(zip(names, values)))
        except Unreadable as unreadable:
            unreadable.inside(self.index(shape, len(structs)))
            raise
        return structs

    def field(self, handle: Handle, name: str, number: int, indices: range, count: int
              ) -> Iterator[Any]:
        """The values of one field. Each is read when it is asked for, so that what is wrong is
        found in the order of the elements."""
        try:
            yield from self.column([*map(library.get_field, repeat(handle), indices,
                                         repeat(number))], count)
        except Unreadable as unreadable:
            unreadable.inside(name)
            raise

    def column(self, elements: list[Handle], count: int) -> Iterable[Any]:
        """The values of some elements of a container that has `count` of them."""
        for element in elements:
            if not element:
                raise missing_element(count)
            yield self.value_of(element)

    def index(self, shape: Shape, position: int) -> object:
        """The index of an element in Python, which is a number for a list."""
        if self.is_list(shape):
            return position
        subscripts = []
        for dimension in shape:
            position, subscript = divmod(position, dimension)
            subscripts.append(subscript)
        return tuple(subscripts)


def _shape(handle: Handle) -> Shape:
    """At least two dimensions."""
    count = library.get_dimension_count(handle)
    if count == 0:
        raise no_dimensions()
    if count > _MOST_DIMENSIONS:
        raise malformed(f'an array of {count} dimensions; NumPy allows at most {_MOST_DIMENSIONS}')
    shape = tuple(library.get_dimensions(handle)[:count])
    return shape if count != 1 else (shape[0], 1)


def number_array(handle: Handle, number: int, shape: Shape, count: int) -> NDArray:
    """Numbers or booleans."""
    dtype = DTYPES[number]
    if count == 0:
        return empty(shape, dtype)
    if number == library.LOGICAL:
        return _elements(handle, library.get_logicals(handle), shape, dtype)
    real = _elements(handle, library.get_data(handle), shape, dtype)
    if library.is_complex(handle):
        return _complex_numbers(
            number, real, _elements(handle, library.get_imaginary(handle), shape, dtype))
    return real


def _elements(handle: Handle, address: Any, shape: Shape, dtype: Any) -> NDArray:
    """A view of the elements, if they are there."""
    if not address:
        raise missing_elements(element_count(shape))
    return view(handle, address, shape, dtype)


def empty(shape: Shape, dtype: Any) -> NDArray:
    try:
        return np.empty(shape, dtype, order='F')
    except ValueError:  # the other dimensions are too large
        raise malformed(f'an array of shape {shape}') from None


def _complex_numbers(number: int, real: NDArray, imaginary: NDArray) -> NDArray:
    """A copy: NumPy interleaves the two parts of a number, the library keeps them apart."""
    dtype = _COMPLEX_DTYPES[number]
    values = np.empty(real.shape, dtype, order='F')
    if dtype.kind == 'c':
        values.real, values.imag = real, imaginary
    else:
        values['real'], values['imag'] = real, imaginary
    return values


def code_units(handle: Handle, count: int) -> Any:
    """The address of the code units of an array. Raises an error unless all `count` arrived."""
    address = library.get_chars(handle)
    if not address:
        raise missing_elements(count)
    return address


def decoded(units: bytes) -> str:
    return units.decode(UTF16, 'surrogatepass')


def characters(handle: Handle, shape: Shape, count: int) -> NDArray:
    units = view(handle, code_units(handle, count), shape, CHAR_UNIT)
    return units.astype(np.uint32, order='F').view('U1')


def _columns(count: int) -> Iterator[range]:
    return (range(start, min(start + _COLUMN, count)) for start in range(0, count, _COLUMN))


def is_row(shape: Shape) -> bool:
    return len(shape) == 2 and shape[0] == 1


def filled(values: list[Any], shape: Shape, dtype: Any) -> NDArray:
    """An array of values that are given column by column. It takes values that have been collected,
    since the dimensions may announce more elements than there are."""
    if not values:
        return empty(shape, dtype)
    array = np.empty(len(values), dtype)
    for i, value in enumerate(values):
        array[i] = value
    return array.reshape(shape, order='F')


def struct_dtype(names: dict[str, int]) -> np.dtype[Any]:
    return np.dtype({'names': list(names), 'formats': [object] * len(names)})


def _structs_without_fields(shape: Shape, count: int) -> NDArray:
    """A few bytes of a reply can announce any number of them, which NumPy stores in no memory."""
    if count > library.LARGEST_SIZE:
        raise malformed(f'an array of shape {shape}')
    return empty(shape, struct_dtype({}))


def field_names(handle: Handle) -> dict[str, int]:
    """The names and numbers of the fields. If a server sends several fields with one name, the
    library returns the first."""
    return {library.get_field_name(handle, number).decode(errors='surrogateescape'): number
            for number in range(library.get_field_count(handle))}
