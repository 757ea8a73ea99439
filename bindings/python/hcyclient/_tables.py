# SPDX-License-Identifier: Apache-2.0
"""Results that are tables."""
from __future__ import annotations

from typing import TYPE_CHECKING, Any, Mapping, Sequence

import numpy as np

from ._storage import NDArray

if TYPE_CHECKING:
    from pandas import DataFrame


def records(structs: Any) -> list[dict[str, Any]]:
    """Return the elements of a struct array as a list, even if there is only one.

    Parameters
    ----------
    structs : dict, list of dicts, or structured array
        A result that is a struct or a struct array. A dict is a single element.

    Returns
    -------
    list of dict
        One for each element; those of a structured array are in column-major order.

    Raises
    ------
    TypeError
        If `structs` is something else.
    """
    if isinstance(structs, Mapping):
        return [dict(structs)]
    if isinstance(structs, (np.ndarray, np.void)) and structs.dtype.names is not None:
        names = structs.dtype.names
        return [dict(zip(names, element)) for element in np.asarray(structs).ravel('F')]
    if isinstance(structs, (list, tuple)) and all(isinstance(one, Mapping) for one in structs):
        return [dict(one) for one in structs]
    raise TypeError(f'records() takes a dict, a list of dicts or a structured array, not '
                    f'{type(structs).__name__}')


def to_pandas(table: Any) -> DataFrame:
    """Convert a table to a pandas DataFrame.

    Parameters
    ----------
    table : dict, list of dicts, or structured array
        A struct whose fields are the columns (vectors, cells, or scalars for a table of one row),
        or a struct array whose elements are the rows. For large tables, the first form is much
        faster.

    Returns
    -------
    pandas.DataFrame
        With the index 0, 1, ... A column has a NumPy dtype if its values share one.

    Raises
    ------
    ImportError
        If pandas is not installed.
    TypeError, ValueError
        If `table` is something else, or its columns differ in length.
    """
    import pandas

    return pandas.DataFrame(_columns(table))


def to_structured(table: Any) -> NDArray:
    """Convert a table to a one-dimensional structured array with plain dtypes.

    Parameters
    ----------
    table : dict, list of dicts, or structured array
        As for to_pandas().

    Returns
    -------
    numpy.ndarray
        Each field has the dtype of its column if all its values are numbers, booleans or strings of
        one type; otherwise it has the dtype object.

    Raises
    ------
    TypeError, ValueError
        As for to_pandas().
    """
    columns = _columns(table)
    rows = len(next(iter(columns.values()), ()))
    array = np.empty(rows, [(name, column.dtype) for name, column in columns.items()])
    for name, column in columns.items():
        array[name] = column
    return array


def _columns(table: Any) -> dict[str, NDArray]:
    if isinstance(table, Mapping):
        columns = {name: _column_of(name, value) for name, value in table.items()}
    else:
        rows = records(table)
        columns = {name: _plain([row[name] for row in rows]) for name in (rows[0] if rows else ())}
    lengths = {len(column) for column in columns.values()}
    if len(lengths) > 1:
        raise ValueError('the columns of the table differ in length: ' + ', '.join(
            f'{name} has {len(column)}' for name, column in columns.items()))
    return columns


def _column_of(name: str, value: Any) -> NDArray:
    """Convert a field of a struct to a column."""
    if not isinstance(value, np.ndarray):
        return _plain(value if isinstance(value, (list, tuple)) else [value])
    if value.ndim > 1 and value.size != max(value.shape):
        raise ValueError(f'{name} is not a column, but an array of shape {value.shape}')
    column: NDArray = value.reshape(-1)
    return column if value.dtype != object else _plain(column.tolist())


def _plain(values: Sequence[Any]) -> NDArray:
    """A one-dimensional array of the values, with their own dtype if they share one."""
    single = [value.reshape(-1)[0] if isinstance(value, np.ndarray) and value.size == 1 else value
              for value in values]
    kinds = {value.dtype if isinstance(value, np.generic) else type(value) for value in single}
    if len(kinds) == 1 and (kinds <= {str, bool, float} or isinstance(single[0], np.generic)):
        return np.array(single)
    array = np.empty(len(single), object)
    for i, value in enumerate(single):
        array[i] = value
    return array
