# SPDX-License-Identifier: Apache-2.0
"""Many calls with their results in order."""
from __future__ import annotations

import asyncio
from collections import deque
from typing import Any, AsyncIterator, Callable, Iterable, Iterator, Optional

from ._jobs import Call, Task

Progress = Callable[[int, Optional[int]], object]


class Batch:
    """Starts the first `most` calls at once, and each further one when a result is returned."""

    def __init__(self, submit: Callable[[tuple[Any, ...]], Task], abandon: Callable[[Call], None],
                 iterables: tuple[Iterable[Any], ...], most: int,
                 progress: Optional[Progress]) -> None:
        if not iterables:
            raise TypeError('map() takes at least one iterable')
        self._submit = submit
        self._abandon = abandon
        self._total = _length(iterables)
        self._arguments = zip(*iterables)
        self._progress = progress
        self._done = 0
        self._tasks: deque[Task] = deque()
        for _ in range(most):
            self._start_next()

    def results(self) -> Iterator[Any]:
        try:
            while self._tasks:
                value = self._tasks[0].future.result()
                self._count_result()
                yield value
        finally:
            self._abandon_rest()

    async def awaited_results(self) -> AsyncIterator[Any]:
        try:
            while self._tasks:
                value = await asyncio.wrap_future(self._tasks[0].future)
                self._count_result()
                yield value
        finally:
            self._abandon_rest()

    def _start_next(self) -> None:
        for arguments in self._arguments:
            self._tasks.append(self._submit(arguments))
            break

    def _count_result(self) -> None:
        self._tasks.popleft()
        self._start_next()
        self._done += 1
        if self._progress is not None:
            self._progress(self._done, self._total)

    def _abandon_rest(self) -> None:
        for task in self._tasks:
            if not task.future.done():
                self._abandon(task)


def _length(iterables: tuple[Iterable[Any], ...]) -> Optional[int]:
    try:
        return min(len(iterable) for iterable in iterables)  # type: ignore[arg-type]
    except TypeError:
        return None
