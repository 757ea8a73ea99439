# SPDX-License-Identifier: Apache-2.0
"""A log message for each call, at level DEBUG of the logger `hcyclient`."""
from __future__ import annotations

import logging
from typing import Iterable, Optional

from . import _library as library
from ._library import Handle

logger = logging.getLogger('hcyclient')


def is_wanted() -> bool:
    return logger.isEnabledFor(logging.DEBUG)


def byte_count(handles: Iterable[Handle]) -> int:
    """How many bytes of data the arrays hold, including the elements of containers."""
    return sum(_bytes_of(handle) for handle in handles if handle.value)


def log_call(url: str, seconds: float, sent: int, received: int,
             failure: Optional[BaseException], wanted: bool) -> None:
    outcome = 'succeeded'
    if failure is not None:
        text = str(failure).replace(f'{url}: ', '', 1).split('\n', 1)[0]
        outcome = f'{type(failure).__name__}: {text}'
    logger.debug('%s: %.6f s, %d bytes sent, %d bytes received, %s%s', url, seconds, sent, received,
                 outcome, '' if wanted else ', abandoned')


def _bytes_of(handle: Handle) -> int:
    number = library.get_class(handle)
    if number in (library.CELL, library.STRUCT):
        return byte_count(_elements(handle, number))
    if library.is_sparse(handle):
        count = library.get_room(handle)
    else:
        # There is storage only if all elements are there; dimensions alone are not data.
        count = library.get_element_count(handle) if _data(handle, number) else 0
    parts = 2 if library.is_complex(handle) else 1
    size: int = library.get_element_size(handle)
    return int(count) * size * parts


def _data(handle: Handle, number: int) -> object:
    if number == library.LOGICAL:
        return library.get_logicals(handle)
    return (library.get_chars if number == library.CHAR else library.get_data)(handle)


def _elements(handle: Handle, number: int) -> Iterable[Handle]:
    """The elements that are there. The dimensions may announce more than that."""
    for index in range(library.get_element_count(handle)):
        if number == library.CELL:
            fields = [library.get_cell(handle, index)]
        else:
            fields = [library.get_field(handle, index, field)
                      for field in range(library.get_field_count(handle))]
        if not all(fields) or not fields:
            return
        yield from fields
