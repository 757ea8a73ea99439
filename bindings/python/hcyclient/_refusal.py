# SPDX-License-Identifier: Apache-2.0
"""The exception for an argument that cannot be converted."""
from __future__ import annotations

import datetime
import decimal
import fractions
from typing import Any

import numpy as np

from ._place import PlacedError


class CannotConvert(PlacedError):
    """An argument, or a value in it, cannot be converted."""

    def __init__(self, what: str, instead: str) -> None:
        super().__init__(what)
        self.instead = instead

    def as_type_error(self, argument: int) -> TypeError:
        separator = ': ' if self.place else ''
        return TypeError(f'argument {argument}: {self.place}{separator}cannot convert {self.what}; '
                         f'use {self.instead}')


_ADVICE: list[tuple[Any, str]] = [
    ((set, frozenset), 'sorted(x) or list(x)'),
    ((bytes, bytearray), ".decode() for a string, numpy.frombuffer(x, 'uint8') for numbers"),
    ((decimal.Decimal, fractions.Fraction), 'float(x)'),
    (datetime.timedelta, '.total_seconds()'),
    ((datetime.date, datetime.time), '.isoformat() for a string'),
    (type, 'an instance of it'),
]


def object_of(value: Any) -> CannotConvert:
    kind = type(value)
    module = '' if kind.__module__ == 'builtins' else kind.__module__ + '.'
    for types, advice in _ADVICE:
        if isinstance(value, types):
            break
    else:
        advice = 'a number, string, array, list or dict'
        if callable(getattr(kind, '__iter__', None)):
            advice = 'list(x)'
    return CannotConvert(f'object of type {module}{kind.__qualname__}', advice)


def array_of(dtype: np.dtype[Any]) -> CannotConvert:
    advice = {
        'f': ".astype('float64')", 'c': ".astype('complex128')", 'M': ".astype('int64')",
        'm': ".astype('int64')", 'S': ".astype('U')",
    }.get(dtype.kind, ".view('uint8')")
    return CannotConvert(f'array of dtype {dtype}', advice)
