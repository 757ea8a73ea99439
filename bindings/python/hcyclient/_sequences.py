# SPDX-License-Identifier: Apache-2.0
"""Lists of numbers, which become numeric arrays."""
from __future__ import annotations

from typing import Any, Iterable, Optional, Sequence, Tuple

import numpy as np

from ._refusal import CannotConvert
from ._storage import NDArray

_NUMBERS = (int, float, complex, np.number, np.bool_)
_EXACT = 1 << 53  # doubles represent every integer up to this one exactly


def numbers_in(value: Sequence[Any]) -> Optional[NDArray]:
    """The array that NumPy makes of lists of numbers, with doubles for Python integers; None if the
    lists hold anything else."""
    kinds: set[type] = set()
    shape = _shape(value, kinds)
    if shape is None:
        return None
    array = np.empty((0, 0)) if shape == (0,) else _array(value)
    if int in kinds or any(issubclass(kind, int) and kind is not bool for kind in kinds):
        return _with_doubles(array, value, kinds)
    return array


def _array(value: Sequence[Any]) -> NDArray:
    try:
        return np.array(value)
    except OverflowError:  # some versions of NumPy raise it for large integers
        return np.array(value, object)


def _shape(value: Sequence[Any], kinds: set[type]) -> Optional[Tuple[int, ...]]:
    found = set(map(type, value))
    lists = found & {list, tuple}
    numbers = {kind for kind in found if issubclass(kind, _NUMBERS)}
    if found != lists | numbers:
        return None
    kinds |= numbers
    if not lists:
        return len(value),
    shapes = {_shape(element, kinds) for element in value if type(element) in lists}
    if None in shapes:
        return None
    if numbers or len(shapes) > 1:
        raise CannotConvert('lists of numbers that differ in length',
                            'Cell([...]) for a cell array')
    return len(value), *(shapes.pop() or ())


def _with_doubles(array: NDArray, value: Any, kinds: Iterable[type]) -> NDArray:
    if array.dtype.kind in 'iu':
        is_exact = not array.size or -_EXACT <= array.min() and array.max() <= _EXACT
    else:  # there are other numbers too, or integers that are too large for NumPy
        is_exact = array.dtype.kind in 'fc' and not _has_large(value)
    if is_exact:
        return array if array.dtype.kind in 'fc' else array.astype(float)
    flat = np.array(value, object)
    for place, number in np.ndenumerate(flat):
        if isinstance(number, int):
            _require_double(number, place)
    return flat.astype(complex if complex in kinds else float)


def _has_large(value: Any) -> bool:
    return any(_has_large(element) if isinstance(element, (list, tuple)) else
               isinstance(element, int) and not -_EXACT <= element <= _EXACT for element in value)


def _require_double(number: int, place: Tuple[int, ...]) -> None:
    try:
        double_of(number)
    except CannotConvert as refusal:
        refusal.inside(*place)
        raise


def double_of(value: int) -> float:
    """The double that is equal to the integer."""
    try:
        number = float(value)
    except OverflowError:
        raise CannotConvert('int that is too large for a double',
                            'str(x) for a string') from None
    if number != value:
        raise CannotConvert(f'int {value}, which a double cannot represent exactly',
                            'numpy.int64(x) or numpy.uint64(x) to keep it, float(x) for the '
                            'nearest double')
    return number
