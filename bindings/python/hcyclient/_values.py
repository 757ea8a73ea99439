# SPDX-License-Identifier: Apache-2.0
"""Values that Python and NumPy have no type for."""
from __future__ import annotations

from typing import Any, List, NamedTuple, TypeVar

import numpy as np

Element = TypeVar('Element')


class Cell(List[Element]):
    """A list that is a cell array of one row, whatever it holds. A plain list of numbers is an
    array of them, and one of dictionaries with the same keys a struct array.

    Examples
    --------
    >>> parts: Cell[int] = Cell([1, 2])
    """

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
    """The dtype of complex integers, of which NumPy has none of its own.

    Parameters
    ----------
    integer : dtype or what makes one
        The dtype of the parts, of integers with or without a sign.

    Returns
    -------
    numpy.dtype
        With the fields ``real`` and ``imag``.

    Raises
    ------
    TypeError
        If it is no dtype of integers.
    """
    part = np.dtype(integer)
    if part.kind not in 'iu':
        raise TypeError(f'{part} is no dtype of integers')
    return np.dtype([('real', part), ('imag', part)])
