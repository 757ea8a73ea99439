# SPDX-License-Identifier: Apache-2.0
"""Types for values that Python and NumPy have no type for."""
from __future__ import annotations

from typing import Any, List, NamedTuple, TypeVar

import numpy as np

Element = TypeVar('Element')


class Cell(List[Element]):
    """A list that is always sent as a cell array of one row. A plain list of numbers is sent as a
    numeric array, and a plain list of dictionaries with the same keys as a struct array.

    Examples
    --------
    >>> parts: Cell[int] = Cell([1, 2])
    """

    __slots__ = ()


class CompressedColumns(NamedTuple):
    """A sparse matrix for use without SciPy. The attributes are named as in SciPy's csc_matrix.

    The values of column j are ``data[indptr[j]:indptr[j + 1]]``, and their row indices, in
    increasing order, are ``indices[indptr[j]:indptr[j + 1]]``.
    """

    data: np.ndarray[Any, Any]
    indices: np.ndarray[Any, Any]
    indptr: np.ndarray[Any, Any]
    shape: tuple[int, int]


def complex_dtype(integer: Any) -> np.dtype[Any]:
    """Return a dtype for complex integers, which NumPy itself does not have.

    Parameters
    ----------
    integer : dtype, or anything that `numpy.dtype` takes
        The dtype of the two parts: a signed or unsigned integer type.

    Returns
    -------
    numpy.dtype
        With the fields ``real`` and ``imag``.

    Raises
    ------
    TypeError
        If the dtype is not an integer type.
    """
    part = np.dtype(integer)
    if part.kind not in 'iu':
        raise TypeError(f'{part} is not an integer dtype')
    return np.dtype([('real', part), ('imag', part)])
