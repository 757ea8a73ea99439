# SPDX-License-Identifier: Apache-2.0
"""The exceptions for an output that cannot be converted."""
from __future__ import annotations

from ._place import PlacedError
from .errors import IncompleteReply, TransportError


class Unreadable(PlacedError):
    """An output, or an array in it, is not valid or was truncated."""

    kind: type[TransportError] = TransportError

    def text(self, output: int) -> str:
        separator = ', ' if self.place else ''
        return f'output {output}{separator}{self.place}: {self.what}'


class _Incomplete(Unreadable):
    kind = IncompleteReply

    def __init__(self, what: str) -> None:
        super().__init__(f'{what}; the reply may have been truncated at response_size_limit')


def malformed(what: str) -> Unreadable:
    """The server sent a reply that is not valid, or that NumPy or SciPy cannot represent."""
    return Unreadable(f'the reply holds {what}')


def no_dimensions() -> Unreadable:
    return _Incomplete('the array has 0 elements, because no dimensions arrived')


def missing_elements(count: int) -> Unreadable:
    return _Incomplete(f'the dimensions of the array announce {count} elements, which did not '
                       'all arrive')


def missing_indices(count: int) -> Unreadable:
    return _Incomplete(f'the dimensions of the sparse array announce {count} elements, but the '
                       'column starts and row indices that arrived do not describe them')


def missing_element(count: int) -> Unreadable:
    """The place of this error is that of the missing element itself."""
    return _Incomplete(f'the dimensions of the container announce {count} elements, but this one '
                       'did not arrive, or its class is not supported')
