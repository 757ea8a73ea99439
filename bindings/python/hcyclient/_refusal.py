# SPDX-License-Identifier: Apache-2.0
"""What is raised where a value cannot be carried."""
from __future__ import annotations

from typing import Any

from ._place import PlacedError


class CannotCarry(PlacedError):
    """The value of an argument, or in one, has no class."""

    def as_type_error(self, argument: int) -> TypeError:
        separator = ': ' if self.place else ''
        return TypeError(f'argument {argument}: {self.place}{separator}cannot carry {self.what}')


def object_of(value: Any) -> CannotCarry:
    kind = type(value)
    module = '' if kind.__module__ == 'builtins' else kind.__module__ + '.'
    return CannotCarry(f'object of type {module}{kind.__qualname__}')
