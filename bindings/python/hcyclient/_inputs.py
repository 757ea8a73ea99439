# SPDX-License-Identifier: Apache-2.0
"""Converts Python values to arrays of the library."""
from __future__ import annotations

from ctypes import c_char_p
from typing import Any, Callable, Iterable, Iterator, Mapping, Sequence

import numpy as np

from . import _library as library
from ._dense_inputs import integer_scalar, is_complex_integer, logical_scalar, matrix_shape
from ._dense_inputs import nothing, numeric_array, real_scalar, scalar, sized, text, text_array
from ._foreign import array_of_object, fields_of, frame_columns, has_array, pandas_of
from ._foreign import series_array, unmasked
from ._library import Handle
from ._refusal import CannotConvert, object_of
from ._sequences import numbers_in
from ._sparse import compressed_columns, is_scipy_sparse, scipy_sparse
from ._storage import NDArray
from ._values import Cell, CompressedColumns


def handles_of(arguments: Iterable[Any]) -> list[Handle]:
    """Convert the arguments. A TypeError says what cannot be converted, and where it is."""
    handles: list[Handle] = []
    try:
        for argument in arguments:
            handles.append(_handle_of(argument))
    except CannotConvert as refusal:
        raise refusal.as_type_error(len(handles) + 1) from None
    except RecursionError:
        raise CannotConvert('value that is nested too deeply or contains itself',
                            'fewer levels').as_type_error(len(handles) + 1) from None
    return handles


def _handle_of(value: Any) -> Handle:
    convert = _CONVERSIONS.get(type(value))
    if convert is None:
        convert = _conversion_of(value)
    return convert(value)


def _element(value: Any, *place: object) -> Handle:
    """Convert the value at this place of a container."""
    try:
        return _handle_of(value)
    except CannotConvert as refusal:
        refusal.inside(*place)
        raise


def _array(value: NDArray) -> Handle:
    dtype = value.dtype
    if dtype.kind == 'U':
        return text_array(value)
    if dtype.kind == 'O':
        return _object_array(value)
    if dtype.kind == 'V' and dtype.names is not None and not is_complex_integer(dtype):
        return _structured_array(value)
    return numeric_array(value)


def _cells(shape: Sequence[int], values: Iterable[Any], places: Iterable[object]) -> Handle:
    handle = sized(library.create_cell(1, 1), shape)
    for index, (place, value) in enumerate(zip(places, values)):
        library.set_cell(handle, index, _element(value, place))
    return handle


def _object_array(value: NDArray) -> Handle:
    """A cell array."""
    shape = matrix_shape(value.shape)
    return _cells(shape, value.reshape(-1, order='F'), _indices(value))


def _indices(value: NDArray) -> Iterable[tuple[int, ...]]:
    """The indices of the elements, column by column."""
    return (index[::-1] for index in np.ndindex(*value.shape[::-1]))


def _cell(value: Sequence[Any]) -> Handle:
    count = len(value)
    return _cells((1, count) if count else (0, 0), value, range(count))


def _sequence(value: Sequence[Any]) -> Handle:
    """Numbers become a numeric array, mappings and the like with the same keys a struct array, and
    anything else a cell array."""
    numbers = numbers_in(value)
    if numbers is not None:
        return numeric_array(numbers)
    structs = _same_fields(value)
    if not structs:
        return _cell(value)
    names = list(structs[0])
    return _structs((1, len(structs)), names, ((i,) for i in range(len(structs))),
                    ([element[name] for name in names] for element in structs))


def _same_fields(value: Sequence[Any]) -> list[Mapping[Any, Any]]:
    """The fields of each element if all elements have the same fields, otherwise an empty list."""
    found: list[Mapping[Any, Any]] = []
    for element in value:
        fields = fields_of(element)
        if fields is None or found and fields.keys() != found[0].keys():
            return []
        found.append(fields)
    return found


def _tuple(value: tuple[Any, ...]) -> Handle:
    fields = fields_of(value)
    return _sequence(value) if fields is None else _mapping(fields)


def _range(value: range) -> Handle:
    return _sequence(list(value))


def _mapping(value: Mapping[Any, Any]) -> Handle:
    return _structs((1, 1), list(value), [()], [value.values()])


def _structured_array(value: NDArray) -> Handle:
    names = list(value.dtype.names or ())
    return _structs(matrix_shape(value.shape), names, ((index,) for index in _indices(value)),
                    _rows(value.reshape(-1, order='F'), names))


def _rows(elements: NDArray, names: list[str]) -> Iterator[tuple[Any, ...]]:
    """The values of each element. They are taken out column by column, which is several times as
    fast. Only the two dtypes that Python has a type for become Python values."""
    yield from zip(*(elements[name].tolist() if elements.dtype[name].char in 'd?'
                     else list(elements[name]) for name in names))


def _structs(shape: Sequence[int], names: list[Any], places: Iterable[tuple[object, ...]],
             elements: Iterable[Iterable[Any]]) -> Handle:
    """A struct array. The values of each element are in the order of the names."""
    handle = sized(library.create_struct(1, 1, len(names), (c_char_p * len(names))(
        *map(_field_name, names))), shape)
    if not names:
        return handle
    for index, (place, values) in enumerate(zip(places, elements)):
        for number, value in enumerate(values):
            library.set_field(handle, index, number, _element(value, *place, names[number]))
    return handle


def _field_name(name: Any) -> bytes:
    if not isinstance(name, str):
        raise CannotConvert(f'key of type {type(name).__name__}: field names must be strings',
                            'str(x)')
    try:
        encoded = name.encode(errors='surrogateescape')
    except UnicodeEncodeError:
        raise CannotConvert(f'key {name!r}: it is not valid Unicode',
                            'a key without surrogates') from None
    if b'\0' in encoded:
        raise CannotConvert(f'key {name!r}: field names cannot contain NUL', 'a key without NUL')
    return encoded


def _conversion_of(value: Any) -> Callable[[Any], Handle]:
    """The conversion for subclasses of the types in the table, and for types of other libraries."""
    if isinstance(value, np.ma.MaskedArray):
        return lambda masked: _array(unmasked(masked))
    if isinstance(value, (np.ndarray, np.generic)) and not isinstance(value, str):
        return lambda derived: _array(np.asarray(derived))  # a subclass could behave differently
    if is_scipy_sparse(value):  # before mappings: one format is a dict
        return scipy_sparse
    pandas = pandas_of(value)
    if pandas is not None:
        is_frame = isinstance(value, pandas.DataFrame)
        return (lambda frame: _mapping(frame_columns(frame))) if is_frame else (
            lambda series: _array(series_array(series)))
    for base, convert in _DERIVED:
        if isinstance(value, base):
            return convert
    if has_array(value):
        return lambda other: _array(array_of_object(other))
    if fields_of(value) is None:
        raise object_of(value)
    return lambda instance: _mapping(fields_of(instance) or {})


_CONVERSIONS: dict[type, Callable[[Any], Handle]] = {
    np.ndarray: _array,
    float: real_scalar,
    int: integer_scalar,
    bool: logical_scalar,
    complex: scalar,
    str: text,
    dict: _mapping,
    list: _sequence,
    tuple: _sequence,
    range: _range,
    Cell: _cell,
    CompressedColumns: compressed_columns,
    type(None): nothing,
}
_DERIVED: list[tuple[type, Callable[[Any], Handle]]] = [
    (float, real_scalar), (int, integer_scalar), (complex, scalar),
    (str, text), (Mapping, _mapping), (Cell, _cell), (CompressedColumns, compressed_columns),
    (list, _sequence), (tuple, _tuple)]
