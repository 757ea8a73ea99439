# SPDX-License-Identifier: Apache-2.0
"""What is raised where no value can be made of an output."""
from __future__ import annotations

from ._place import PlacedError
from .errors import IncompleteReply, TransportError


class Unreadable(PlacedError):
    """An output, or an array in it, that was sent so, or cut off."""

    kind: type[TransportError] = TransportError

    def text(self, output: int) -> str:
        separator = ', ' if self.place else ''
        return f'output {output}{separator}{self.place}: {self.what}'


class _Incomplete(Unreadable):
    kind = IncompleteReply

    def __init__(self, what: str) -> None:
        super().__init__(f'{what}; the limit on the size of replies (response_size_limit) may have '
                         'cut this one')


def malformed(what: str) -> Unreadable:
    """The server broke its own rules."""
    return Unreadable(f'the reply holds {what}')


def no_dimensions() -> Unreadable:
    return _Incomplete('the array has 0 elements, since no dimensions of it arrived')


def missing_elements(count: int) -> Unreadable:
    return _Incomplete(f'the dimensions of the array name {count} elements, which did not all '
                       'arrive')


def missing_indices(count: int) -> Unreadable:
    return _Incomplete(f'the dimensions of the sparse array name {count} elements, and the column '
                       'starts and row indices that arrived do not describe them')


def missing_element(count: int) -> Unreadable:
    """To be placed at the element itself."""
    return _Incomplete(f'the dimensions of the container name {count} elements, of which this one '
                       'did not arrive, or is of a class that is not served')
