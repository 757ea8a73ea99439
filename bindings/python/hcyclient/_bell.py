# SPDX-License-Identifier: Apache-2.0
"""How one thread wakes another.

A bell is an eventfd. It takes half the time of a lock, because the two threads do not compete for the
interpreter: neither holds it while it writes to the descriptor or reads from it.
"""
from __future__ import annotations

import ctypes
import os
import select
import threading
from typing import Any, List

from ._library import uninterrupted_method

_system: Any = os  # older type stubs lack eventfd


class _Descriptor(ctypes.c_int):
    """A file descriptor that closes itself."""

    __del__ = uninterrupted_method(ctypes.PYFUNCTYPE(ctypes.c_int, ctypes.c_int)(
        ('close', ctypes.pythonapi)))


class Bell:
    """Counts rings: each ends one wait. After a wait, check whether the event has happened, because
    the ring may be a late one, for an earlier event."""

    def __init__(self) -> None:
        self._number = _system.eventfd(0, _system.EFD_SEMAPHORE | _system.EFD_CLOEXEC)
        self._owner = _Descriptor(self._number)
        self._poll = select.poll()
        self._poll.register(self._number, select.POLLIN)

    def ring(self) -> None:
        _system.eventfd_write(self._number, 1)

    def wait(self) -> None:
        _system.eventfd_read(self._number)

    def wait_at_most(self, milliseconds: int) -> None:
        """Only one thread at a time may call this."""
        if self._poll.poll(milliseconds):
            _system.eventfd_read(self._number)


class _OfThread(threading.local):
    def __init__(self) -> None:
        self.bells: List[Bell] = []


_spare = _OfThread()


def own_bell() -> Bell:
    """A bell that only this thread uses. A signal handler that interrupts it gets another one."""
    try:
        return _spare.bells.pop()
    except IndexError:
        return Bell()


def return_bell(bell: Bell) -> None:
    """Keep the bell for this thread's next call."""
    _spare.bells.append(bell)


def _forget() -> None:
    _spare.bells = []  # the parent uses these descriptors too


os.register_at_fork(after_in_child=_forget)
