# SPDX-License-Identifier: Apache-2.0
"""Values of other libraries, and of the standard library, in terms of NumPy and dictionaries."""
from __future__ import annotations

import dataclasses
import sys
from typing import Any, Mapping, Optional

import numpy as np

from ._refusal import CannotCarry
from ._storage import NDArray


def pandas_of(value: Any) -> Any:
    """The module of pandas, if the value is of one of its types. Nobody has such a value who has
    not imported it."""
    module = sys.modules.get('pandas')
    kinds = module and (module.DataFrame, module.Series, module.Index)
    return module if kinds and isinstance(value, kinds) else None


def frame_columns(frame: Any) -> dict[str, Any]:
    """Its columns by name, as a struct has them. The index is left out."""
    names = list(frame.columns)
    if len(set(names)) != len(names):
        raise CannotCarry('DataFrame with two columns of one name', '.rename(columns=...)')
    return {name: frame[name] for name in names}


def series_array(series: Any) -> NDArray:
    """The values of a Series or an Index."""
    dtype = getattr(series.dtype, 'numpy_dtype', None)  # of those that know of missing values
    if dtype is None:
        return np.asarray(series.to_numpy())
    if series.isna().any():
        raise CannotCarry(f'{type(series).__name__} of dtype {series.dtype} with missing values',
                          ".to_numpy(float, na_value=float('nan'))")
    return np.asarray(series.to_numpy(dtype=dtype))


def unmasked(array: Any) -> NDArray:
    """The data of a masked array that has nothing masked."""
    masked: Any = np.ma  # which is not typed everywhere
    if masked.is_masked(array):
        raise CannotCarry('masked array with masked elements',
                          '.filled(x) with the number that stands for them')
    return np.asarray(array.data)


def has_array(value: Any) -> bool:
    """Whether NumPy can make an array of it that is not just an object."""
    kind = type(value)
    return isinstance(value, memoryview) or kind.__module__ == 'array' or hasattr(
        kind, '__array__') or hasattr(kind, '__array_interface__')


def array_of_object(value: Any) -> NDArray:
    array = np.asarray(value)
    if array.dtype.kind == 'O':
        raise CannotCarry(f'object of type {type(value).__qualname__}, whose array holds objects',
                          'list(x)')
    return array


def fields_of(value: Any) -> Optional[Mapping[Any, Any]]:
    """The fields of a dictionary, a named tuple or an instance of a dataclass."""
    if isinstance(value, Mapping):
        return value
    if isinstance(value, tuple):
        names = getattr(value, '_fields', None)
        return None if names is None else dict(zip(names, value))
    if dataclasses.is_dataclass(value) and not isinstance(value, type):
        return {field.name: getattr(value, field.name) for field in dataclasses.fields(value)}
    return None
