# SPDX-License-Identifier: Apache-2.0
"""Converts values of other libraries to NumPy arrays and dictionaries."""
from __future__ import annotations

import dataclasses
import sys
from typing import Any, Mapping, Optional

import numpy as np

from ._refusal import CannotConvert
from ._storage import NDArray


def pandas_of(value: Any) -> Any:
    """The module pandas if the value is of one of its types, otherwise None. Nothing is imported:
    if pandas has not been imported, the value cannot come from it."""
    module = sys.modules.get('pandas')
    kinds = module and (module.DataFrame, module.Series, module.Index)
    return module if kinds and isinstance(value, kinds) else None


def frame_columns(frame: Any) -> dict[str, Any]:
    """The columns by name, without the index."""
    names = list(frame.columns)
    if len(set(names)) != len(names):
        raise CannotConvert('DataFrame with two columns of the same name', '.rename(columns=...)')
    return {name: frame[name] for name in names}


def series_array(series: Any) -> NDArray:
    """The values of a Series or an Index."""
    dtype = getattr(series.dtype, 'numpy_dtype', None)  # only dtypes with missing values have it
    if dtype is None:
        return np.asarray(series.to_numpy())
    if series.isna().any():
        raise CannotConvert(f'{type(series).__name__} of dtype {series.dtype} with missing values',
                            ".to_numpy(float, na_value=float('nan'))")
    return np.asarray(series.to_numpy(dtype=dtype))


def unmasked(array: Any) -> NDArray:
    """The data of a masked array, in which nothing is masked."""
    masked: Any = np.ma  # not every version of NumPy has types for it
    if masked.is_masked(array):
        raise CannotConvert('masked array with masked elements',
                            '.filled(x), where x replaces the masked elements')
    return np.asarray(array.data)


def has_array(value: Any) -> bool:
    """Whether the value offers NumPy an array, in one of the usual ways."""
    kind = type(value)
    return isinstance(value, memoryview) or kind.__module__ == 'array' or hasattr(
        kind, '__array__') or hasattr(kind, '__array_interface__')


def array_of_object(value: Any) -> NDArray:
    array = np.asarray(value)
    if array.dtype.kind == 'O':
        raise CannotConvert(f'object of type {type(value).__qualname__}, whose array holds objects',
                            'list(x)')
    return array


def fields_of(value: Any) -> Optional[Mapping[Any, Any]]:
    """The fields of a mapping, a named tuple or a dataclass instance; None for anything else."""
    if isinstance(value, Mapping):
        return value
    if isinstance(value, tuple):
        names = getattr(value, '_fields', None)
        return None if names is None else dict(zip(names, value))
    if dataclasses.is_dataclass(value) and not isinstance(value, type):
        return {field.name: getattr(value, field.name) for field in dataclasses.fields(value)}
    return None
