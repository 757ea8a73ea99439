# SPDX-License-Identifier: Apache-2.0
"""What is raised where a value cannot be carried."""
from __future__ import annotations

import datetime
import decimal
import fractions
from typing import Any

import numpy as np

from ._place import PlacedError


class CannotCarry(PlacedError):
    """The value of an argument, or in one, has no class."""

    def __init__(self, what: str, instead: str) -> None:
        super().__init__(what)
        self.instead = instead

    def as_type_error(self, argument: int) -> TypeError:
        separator = ': ' if self.place else ''
        return TypeError(f'argument {argument}: {self.place}{separator}cannot carry {self.what}; '
                         f'write {self.instead}')


_ADVICE: list[tuple[Any, str]] = [
    ((set, frozenset), 'sorted(x) or list(x)'),
    ((bytes, bytearray), ".decode() for text, numpy.frombuffer(x, 'uint8') for numbers"),
    ((decimal.Decimal, fractions.Fraction), 'float(x)'),
    (datetime.timedelta, '.total_seconds()'),
    ((datetime.date, datetime.time), '.isoformat() for text'),
    (type, 'an instance of it'),
]


def object_of(value: Any) -> CannotCarry:
    kind = type(value)
    module = '' if kind.__module__ == 'builtins' else kind.__module__ + '.'
    for types, advice in _ADVICE:
        if isinstance(value, types):
            break
    else:
        advice = 'a number, text, array, list or dict'
        if callable(getattr(kind, '__iter__', None)):
            advice = 'list(x)'
    return CannotCarry(f'object of type {module}{kind.__qualname__}', advice)


def array_of(dtype: np.dtype[Any]) -> CannotCarry:
    advice = {
        'f': ".astype('float64')", 'c': ".astype('complex128')", 'M': ".astype('int64')",
        'm': ".astype('int64')", 'S': ".astype('U')",
    }.get(dtype.kind, ".view('uint8')")
    return CannotCarry(f'array of dtype {dtype}', advice)
