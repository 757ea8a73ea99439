# SPDX-License-Identifier: Apache-2.0
"""The place of a value within a container."""
from __future__ import annotations

from typing import TypeVar

Self = TypeVar('Self', bound='PlacedError')


class PlacedError(Exception):
    """Collects the place of a value as it passes through the containers around it."""

    def __init__(self, what: str) -> None:
        super().__init__(what)
        self.what = what
        self._steps: list[str] = []

    def inside(self: Self, *place: object) -> Self:
        """Add the steps from a container to its element, such as an index and a key."""
        self._steps[:0] = map(_subscript, place)
        return self

    @property
    def place(self) -> str:
        return ''.join(self._steps)


def _subscript(step: object) -> str:
    if isinstance(step, tuple):  # the index of an array; empty for one without dimensions
        return f'[{", ".join(map(str, step))}]' if step else ''
    return f'[{step!r}]'
