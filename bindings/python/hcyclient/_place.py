# SPDX-License-Identifier: Apache-2.0
"""Where in a container a value stands."""
from __future__ import annotations

from typing import TypeVar

Self = TypeVar('Self', bound='PlacedError')


class PlacedError(Exception):
    """Gathers the value's place on the way out of the containers around it."""

    def __init__(self, what: str) -> None:
        super().__init__(what)
        self.what = what
        self._steps: list[str] = []

    def inside(self: Self, *place: object) -> Self:
        """Adds the steps that lead from a container to its element, such as an index and a key."""
        self._steps[:0] = map(_subscript, place)
        return self

    @property
    def place(self) -> str:
        return ''.join(self._steps)


def _subscript(step: object) -> str:
    if isinstance(step, tuple):  # of an array; one without dimensions has none
        return f'[{", ".join(map(str, step))}]' if step else ''
    return f'[{step!r}]'
