# SPDX-License-Identifier: Apache-2.0
"""Many calls with their results in order."""
from __future__ import annotations

from collections import deque
from typing import Any, Callable, Iterable, Iterator, Optional

from ._jobs import Call, Task

Progress = Callable[[int, Optional[int]], object]


def results_in_order(submit: Callable[[tuple[Any, ...]], Task], abandon: Callable[[Call], None],
                     iterables: tuple[Iterable[Any], ...], most: int,
                     progress: Optional[Progress]) -> Iterator[Any]:
    """Keep at most this many calls in progress."""
    if not iterables:
        raise TypeError('map() takes at least one iterable')
    total = _length(iterables)
    arguments = zip(*iterables)
    tasks: deque[Task] = deque()
    _fill(tasks, submit, arguments, most)
    return _results(tasks, submit, abandon, arguments, total, progress)


def _fill(tasks: deque[Task], submit: Callable[[tuple[Any, ...]], Task],
          arguments: Iterator[tuple[Any, ...]], count: int) -> None:
    for _ in range(count):
        for one in arguments:
            tasks.append(submit(one))
            break


def _results(tasks: deque[Task], submit: Callable[[tuple[Any, ...]], Task],
             abandon: Callable[[Call], None], arguments: Iterator[tuple[Any, ...]],
             total: Optional[int], progress: Optional[Progress]) -> Iterator[Any]:
    done = 0
    try:
        while tasks:
            value = tasks[0].future.result()
            tasks.popleft()
            _fill(tasks, submit, arguments, 1)
            done += 1
            if progress is not None:
                progress(done, total)
            yield value
    finally:
        for task in tasks:
            if not task.future.done():
                abandon(task)


def _length(iterables: tuple[Iterable[Any], ...]) -> Optional[int]:
    try:
        return min(len(iterable) for iterable in iterables)  # type: ignore[arg-type]
    except TypeError:
        return None
