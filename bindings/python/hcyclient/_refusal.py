# SPDX-License-Identifier: Apache-2.0
"""What is raised where a value cannot be carried."""
from __future__ import annotations

from typing import Any


class CannotCarry(Exception):
    """Gathers the value's place on the way out of the containers around it."""

    def __init__(self, what: str) -> None:
        super().__init__(what)
        self.what = what
        self.place: list[str] = []

    def inside(self, step: str) -> CannotCarry:
        self.place.insert(0, step)
        return self

    def as_type_error(self, argument: int) -> TypeError:
        place = ''.join(self.place)
        separator = ': ' if place else ''
        return TypeError(f'argument {argument}: {place}{separator}cannot carry {self.what}')


def object_of(value: Any) -> CannotCarry:
    kind = type(value)
    module = '' if kind.__module__ == 'builtins' else kind.__module__ + '.'
    return CannotCarry(f'object of type {module}{kind.__qualname__}')
