# SPDX-License-Identifier: Apache-2.0
"""How one thread wakes another.

A bell is a pipe, because that takes half the time of a lock: who rings it and who is woken by it do
not contend for the interpreter, since neither holds it then.
"""
from __future__ import annotations

import ctypes
import os
import select
import threading
from typing import List

from ._library import uninterrupted_method


class _Descriptor(ctypes.c_int):
    """Closes itself."""

    __del__ = uninterrupted_method(ctypes.PYFUNCTYPE(ctypes.c_int, ctypes.c_int)(
        ('close', ctypes.pythonapi)))


class Bell:
    """Ringing is only a hint to look: a bell may have been rung for an earlier reason."""

    def __init__(self) -> None:
        self._reading, self._writing = os.pipe()
        self._owners = _Descriptor(self._reading), _Descriptor(self._writing)
        os.set_blocking(self._writing, False)
        self._poll = select.poll()
        self._poll.register(self._reading, select.POLLIN)

    def ring(self) -> None:
        try:
            os.write(self._writing, b'.')
        except BlockingIOError:  # it has been rung often enough for everybody
            pass

    def wait(self) -> None:
        os.read(self._reading, 1)

    def wait_at_most(self, milliseconds: int) -> None:
        """Only one thread may wait so."""
        if self._poll.poll(milliseconds):
            os.read(self._reading, 1)


class _OfThread(threading.local):
    def __init__(self) -> None:
        self.bells: List[Bell] = []


_spare = _OfThread()


def own_bell() -> Bell:
    """One that this thread alone has. A signal handler that asks in between gets another one."""
    try:
        return _spare.bells.pop()
    except IndexError:
        return Bell()


def return_bell(bell: Bell) -> None:
    """For the next time."""
    _spare.bells.append(bell)


def _forget() -> None:
    _spare.bells = []  # the pipes are the parent's, too


os.register_at_fork(after_in_child=_forget)
