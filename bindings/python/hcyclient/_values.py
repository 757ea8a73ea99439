# SPDX-License-Identifier: Apache-2.0
"""Values that Python and NumPy have no type for."""
from __future__ import annotations

from typing import Any, List, NamedTuple

import numpy as np


class Cell(List[Any]):
    """A list that is a cell array of one row, whatever it holds: a list of dictionaries with the
    same keys would be a struct array otherwise."""

    __slots__ = ()


class CompressedColumns(NamedTuple):
    """A sparse matrix where SciPy is not installed, under the names of its csc_matrix: the values
    of column j are data[indptr[j]:indptr[j + 1]], in the rows indices[indptr[j]:indptr[j + 1]],
    which rise."""

    data: np.ndarray[Any, Any]
    indices: np.ndarray[Any, Any]
    indptr: np.ndarray[Any, Any]
    shape: tuple[int, int]


def complex_dtype(integer: Any) -> np.dtype[Any]:
    """The dtype of complex integers, of which NumPy has none of its own: its fields are `real` and
    `imag`, of the given dtype."""
    part = np.dtype(integer)
    if part.kind not in 'iu':
        raise TypeError(f'{part} is no dtype of integers')
    return np.dtype([('real', part), ('imag', part)])
