# SPDX-License-Identifier: Apache-2.0
"""How much a reply can hold."""
from __future__ import annotations

from ._malformed import malformed
from ._storage import Shape


class Budget:
    """How many elements a reply can still hold, in all of its arrays together: each takes a byte of
    it at least. So a few bytes cannot claim more memory than the limit for replies allows."""

    __slots__ = ('_left',)

    def __init__(self, response_size_limit: int) -> None:
        self._left = response_size_limit

    def take(self, count: int, shape: Shape) -> None:
        if count > self._left:
            raise malformed(f'an array of shape {tuple(shape)}, more than a reply can hold')
        self._left -= count
