# SPDX-License-Identifier: Apache-2.0
"""Sparse matrices in both directions: SciPy's if it is installed, otherwise our own type."""
from __future__ import annotations

import sys
from operator import index
from typing import Any

import numpy as np

from . import _library as library
from ._library import COMPLEX, LARGEST_SIZE, REAL, Handle
from ._refusal import CannotConvert
from ._storage import DTYPES, SIZE, NDArray, require_memory, view
from ._unreadable import malformed, missing_elements, missing_indices
from ._values import CompressedColumns

_SCIPY = 'scipy.sparse.csc_matrix(...), which checks its arguments'
_DOUBLE, _LOGICAL = DTYPES[library.DOUBLE], DTYPES[library.LOGICAL]


def is_scipy_sparse(value: Any) -> bool:
    """Nothing is imported, since that takes long: without SciPy, the value cannot come from it."""
    module = sys.modules.get('scipy.sparse')
    return module is not None and bool(module.issparse(value))


def scipy_sparse(value: Any) -> Handle:
    columns = value.tocsc()
    if not columns.has_canonical_format:
        columns = columns.copy()
        columns.sum_duplicates()
    return compressed_columns(CompressedColumns(columns.data, columns.indices, columns.indptr,
                                                columns.shape))


def compressed_columns(value: CompressedColumns) -> Handle:
    rows, columns = _rows_and_columns(value.shape)
    data, indices, indptr = map(np.asarray, value[:3])
    if data.dtype.char not in '?dD':
        raise CannotConvert(f'sparse matrix of dtype {data.dtype}: only float64, complex128 and '
                            'bool are supported', ".astype('float64')")
    if data.ndim != 1 or not _are_indices(indices) or not _are_indices(indptr):
        raise CannotConvert('sparse matrix whose data, indices or indptr is not one-dimensional, '
                            'or has the wrong type', _SCIPY)
    stored = int(indptr[-1]) if indptr.size else 0
    if stored > min(len(data), len(indices), LARGEST_SIZE) or not _make_sense(
            rows, columns, indices[:stored], indptr):
        raise CannotConvert('sparse matrix whose indices and indptr are not consistent', _SCIPY)
    require_memory(columns + 1 + 3 * stored)
    if data.dtype == _LOGICAL:
        handle: Handle = library.create_sparse_logical(rows, columns, stored)
        _write(library.get_logicals(handle), _LOGICAL, data[:stored])
    else:
        is_complex = data.dtype.kind == 'c'
        handle = library.create_sparse(rows, columns, stored, COMPLEX if is_complex else REAL)
        _write(library.get_data(handle), _DOUBLE, np.real(data)[:stored])
        if is_complex:
            _write(library.get_imaginary(handle), _DOUBLE, np.imag(data)[:stored])
    _write(library.get_rows(handle), SIZE, indices[:stored])
    _write(library.get_column_starts(handle), SIZE, indptr)
    return handle


def _rows_and_columns(shape: Any) -> tuple[int, int]:
    try:
        rows, columns = map(index, shape)
    except (TypeError, ValueError):
        raise CannotConvert('sparse matrix whose shape is not two integers', _SCIPY) from None
    if min(rows, columns) < 0:
        raise CannotConvert(f'sparse matrix of shape {(rows, columns)}', _SCIPY)
    if max(rows, columns + 1) > LARGEST_SIZE:
        raise CannotConvert(f'sparse matrix of shape {(rows, columns)}: it is too large',
                            'several calls, each with a part of it')
    return rows, columns


def _are_indices(part: NDArray) -> bool:
    return part.ndim == 1 and (part.dtype.kind in 'iu' or part.size == 0)


def _make_sense(rows: int, columns: int, indices: NDArray, indptr: NDArray) -> bool:
    """Whether the column starts increase from 0 to the number of stored elements, and the row
    indices increase within each column."""
    starts, places = indptr.astype(np.int64), indices.astype(np.int64)
    if len(starts) != columns + 1 or starts[0] != 0 or starts[-1] != len(places):
        return False
    if (np.diff(starts) < 0).any() or ((places < 0) | (places >= rows)).any():
        return False
    falls = np.flatnonzero(np.diff(places) <= 0) + 1  # allowed only at the start of a column
    return bool(np.isin(falls, starts).all())


def _write(address: int, dtype: np.dtype[Any], values: NDArray) -> None:
    if values.size:
        np.copyto(view(None, address, values.shape, dtype), values, casting='unsafe')


def sparse_value(handle: Handle, shape: tuple[int, ...], count: int) -> Any:
    """SciPy's csc_matrix, whose values are a view, or our own type. The count includes the elements
    that are not stored."""
    # Null unless they and the row indices describe a matrix of this shape.
    address = library.get_column_starts(handle)
    if not address:
        raise missing_indices(count)
    row_count, column_count = shape
    if row_count > LARGEST_SIZE:
        raise malformed(f'a sparse array of shape {shape}')
    starts = view(handle, address, (column_count + 1,), SIZE)
    stored = int(starts[-1])
    rows = _stored(handle, library.get_rows(handle), stored, SIZE, count)
    if not _make_sense(row_count, column_count, rows, starts):
        raise malformed('a sparse array whose row indices do not increase within each column')
    return _built(_values(handle, stored, count), rows, starts, (row_count, column_count))


def _stored(handle: Handle, address: Any, stored: int, dtype: np.dtype[Any], count: int) -> NDArray:
    if stored == 0:
        return np.empty(0, dtype)
    if not address:
        raise missing_elements(count)
    return view(handle, address, (stored,), dtype)


def _values(handle: Handle, stored: int, count: int) -> NDArray:
    if library.get_class(handle) == library.LOGICAL:
        return _stored(handle, library.get_logicals(handle), stored, _LOGICAL, count)
    real = _stored(handle, library.get_data(handle), stored, _DOUBLE, count)
    if stored == 0 or not library.is_complex(handle):
        return real
    values = np.empty(stored, np.complex128)
    values.real = real
    values.imag = _stored(handle, library.get_imaginary(handle), stored, _DOUBLE, count)
    return values


def _built(data: NDArray, rows: NDArray, starts: NDArray, shape: tuple[int, int]) -> Any:
    try:
        from scipy.sparse import csc_matrix
    except ImportError:
        return CompressedColumns(data, rows.astype(np.int64), starts.astype(np.int64), shape)
    return csc_matrix((data, rows.astype(np.int64), starts.astype(np.int64)), shape=shape)
