# SPDX-License-Identifier: Apache-2.0
"""Calls that a pool makes.

A thread of the pool runs the job. The job owns everything that the library reads and writes during
the call, so a thread that waits for it may stop waiting at any time.
"""
from __future__ import annotations

from concurrent.futures import Future
from ctypes import byref, c_void_p, sizeof
from time import perf_counter
from typing import Any, Callable, NoReturn, Optional

from ._bell import own_bell, return_bell
from ._connection import Connection
from ._inputs import handles_of
from ._library import Handle
from ._log import byte_count, is_wanted, log_call
from ._outputs import ExactReader
from ._records import last_failure
from ._urls import public

CLOSED = 'this client was closed during the call'


class Call:
    """One evaluation of a function. The caller runs prepare() and result(), the thread of a
    connection runs evaluate(). The pool reads `wanted` and `finished`: it does not start a call
    that nobody wants, and does not count the connection that such a call still occupies."""

    __slots__ = ('url', 'nargout', 'reader', 'inputs', 'outputs', 'room', 'failure', 'wanted',
                 'finished')

    def __init__(self, url: bytes, nargout: int, reader: ExactReader) -> None:
        self.url = url
        self.nargout = nargout
        self.reader = reader
        self.failure: Optional[BaseException] = None
        self.wanted = True
        self.finished = False

    def prepare(self, arguments: tuple[Any, ...]) -> None:
        """Raise TypeError if an argument cannot be converted."""
        self.inputs = handles_of(arguments)
        if self.nargout == 1:
            self.outputs = [Handle()]
            self.room: Any = byref(self.outputs[0])
        else:
            room = (c_void_p * self.nargout)()
            # They share the memory of `room`, and so own each output as soon as it is written.
            self.outputs = [Handle.from_buffer(room, i * sizeof(c_void_p))
                            for i in range(self.nargout)]
            self.room = room

    def evaluate(self, connection: Connection) -> None:
        if is_wanted():
            self._evaluate_and_log(connection)
        else:
            self._evaluate(connection)
        self.inputs = []

    def _evaluate(self, connection: Connection) -> None:
        count = len(self.inputs)
        pointers = (c_void_p * count)(*[handle.value for handle in self.inputs])
        if connection.feval(connection.context, self.url, self.nargout, self.room, count, pointers):
            self.failure = last_failure(connection.runtime, connection.context, public(self.url))

    def _evaluate_and_log(self, connection: Connection) -> None:
        start = perf_counter()
        self._evaluate(connection)
        seconds = perf_counter() - start
        log_call(public(self.url), seconds, byte_count(self.inputs), byte_count(self.outputs),
                 self.failure, self.wanted)

    def result(self) -> Any:
        """Return the outputs, or raise the exception that the call failed with. The call gives up
        its outputs, because an exception that is kept keeps the call alive, too."""
        outputs, self.outputs, self.room = self.outputs, [], None
        if self.failure is not None:
            self._raise_failure()
        values = self.reader.values_of(outputs, self.url)
        if self.nargout == 1:
            return values[0]
        return tuple(values) if self.nargout else None

    def _raise_failure(self) -> NoReturn:
        """The call gives up its exception: each refers to the other, and would keep it alive."""
        failure, self.failure = self.failure, None
        try:
            assert failure is not None
            raise failure
        finally:
            del failure

    def run(self, connection: Connection) -> bool:
        """Run on a thread of the pool. Raises nothing. Returns whether somebody still wanted the
        call when it ended."""
        raise NotImplementedError

    def fail(self, error: BaseException) -> None:
        """End the call for the thread that waits for it, although it may still run."""
        raise NotImplementedError


class AwaitedCall(Call):
    """A call that a thread waits for. That thread prepares it and reads its result; only the
    transfer runs on a thread of the pool."""

    __slots__ = ('bell', 'error')

    def __init__(self, url: bytes, nargout: int, reader: ExactReader) -> None:
        super().__init__(url, nargout, reader)
        self.error: Optional[BaseException] = None
        self.bell = own_bell()

    def run(self, connection: Connection) -> bool:
        try:
            self.evaluate(connection)
        except BaseException as error:
            self.failure = error
        if not self.wanted:
            return False
        self.finished = True
        self.bell.ring()
        return True

    def fail(self, error: BaseException) -> None:
        self.error = error
        self.wanted = False
        self.bell.ring()

    def is_over(self) -> bool:
        return self.finished or self.error is not None

    def result(self) -> Any:
        return_bell(self.bell)
        if self.error is not None:
            raise self.error
        return super().result()


class Task(Call):
    """A call that runs entirely on a thread of the pool, and completes a future. It refers to its
    client, which would otherwise be closed when the last other reference goes."""

    __slots__ = ('client', 'arguments', 'future')

    def __init__(self, url: bytes, nargout: int, reader: ExactReader, client: object,
                 arguments: tuple[Any, ...]) -> None:
        super().__init__(url, nargout, reader)
        self.client = client
        self.arguments = arguments
        self.future: Future[Any] = Future()

    def run(self, connection: Connection) -> bool:
        if self.future.set_running_or_notify_cancel():
            try:
                self.prepare(self.arguments)
                self.evaluate(connection)
                value = self.result()
            except BaseException as error:
                self._settle(self.future.set_exception, error)
            else:
                self._settle(self.future.set_result, value)
        self.finished = self.wanted
        return self.wanted

    def fail(self, error: BaseException) -> None:
        self.wanted = False
        if not self.future.cancelled():
            self._settle(self.future.set_exception, error)

    @staticmethod
    def _settle(settle: Callable[[Any], None], outcome: Any) -> None:
        try:
            settle(outcome)
        except Exception:  # closing the client has completed the future in the meantime
            pass
