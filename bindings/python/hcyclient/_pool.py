# SPDX-License-Identifier: Apache-2.0
"""The connections of a client, each with its own thread that makes the calls.

The interpreter runs signal handlers on its main thread only, and not while that thread is inside
the library. So calls run on other threads, and a thread that waits for one can be interrupted. A
call that nobody waits for any more runs to its end in the background. Its connection does not count
any more, so that a new one can take its place at once, and is closed when the call ends.
"""
from __future__ import annotations

import os
import threading
import weakref
from _thread import allocate_lock, get_ident, start_new_thread
from collections import deque
from typing import Any, List, Mapping, Optional

from . import _runtime
from ._bell import Bell
from ._connection import Connection
from ._jobs import CLOSED, AwaitedCall, Call

_LOOK = 50  # milliseconds between two checks that there is a worker for the job
_CLOSING_TIME = 5.0  # seconds to wait for each connection that is closed


class _Worker:
    """A thread, and the job that it runs."""

    __slots__ = ('job', 'thread', 'ended')

    def __init__(self) -> None:
        self.job: Optional[Call] = None
        self.thread = 0
        self.ended = allocate_lock()
        self.ended.acquire()

    def is_idle(self) -> bool:
        job = self.job
        return job is None or job.finished

    def counts(self) -> bool:
        job = self.job
        return job is None or job.wanted or job.finished


class Pool:
    """Holds up to `most` connections. They are opened when they are needed, and kept open."""

    def __init__(self, settings: Mapping[str, Any], most: int) -> None:
        self.settings = settings
        self.most = most
        self.closed = False
        self._runtime: Optional[_runtime.Runtime] = _runtime.acquire()
        try:
            # Created now, so that creating the client reports what is wrong with its settings.
            first = Connection(settings)
        except BaseException:
            _runtime.release()
            raise
        self._begin(first)
        _pools.add(self)

    def _begin(self, *connections: Connection) -> None:
        # Reentrant: the garbage collector or a signal handler may get here while it is held.
        self._lock = threading.RLock()
        self._bell = Bell()
        self._jobs: deque[Call] = deque()
        self._workers: List[_Worker] = []
        self._spare = list(connections)

    def begin_anew(self) -> None:
        """Start over in a child process, where the threads do not exist. The connections belong to
        the parent."""
        self._begin()

    @property
    def connections(self) -> int:
        """How many connections are open."""
        return sum(worker.counts() for worker in list(self._workers))

    def finish(self, job: AwaitedCall) -> Any:
        """Return the result of a call, or raise its exception or that of a signal handler."""
        try:
            self.start(job)
            while True:
                job.bell.wait_at_most(_LOOK)
                if job.is_over():
                    break
                self._add_worker_if_needed()
        finally:
            job.wanted = False  # an assignment, which cannot be interrupted
        return job.result()

    def start(self, job: Call) -> None:
        self._require_open()
        self._jobs.append(job)
        self._add_worker_if_needed()
        if self.closed:  # in the meantime
            self._fail_waiting_jobs()
        self._bell.ring()  # last, as the thread of the job is waiting for it

    def abandon(self, job: Call) -> None:
        job.wanted = False
        self._add_worker_if_needed()

    def close(self, wait: bool = True) -> None:
        """Close all idle connections, and wait until they are closed. Calls in progress fail for
        the threads that wait for them, and run to their end in the background."""
        with self._lock:
            self.closed = True
            workers = list(self._workers)
            runtime, self._runtime = self._runtime, None
        if runtime is not None:  # each connection holds a reference of its own
            _runtime.release()
        self._fail_waiting_jobs()
        idle = [worker for worker in workers if worker.is_idle()]
        for worker in workers:
            job = worker.job
            if job is not None and not job.finished:
                job.fail(RuntimeError(CLOSED))
            self._bell.ring()
        while self._spare:
            self._spare.pop().end()
        for worker in idle:
            if wait and worker.thread != get_ident():
                worker.ended.acquire(True, _CLOSING_TIME)

    def _require_open(self) -> None:
        if self.closed:
            raise RuntimeError('this client is closed')

    def _fail_waiting_jobs(self) -> None:
        while self._jobs:
            job = self._next_job()
            if job is not None:
                job.fail(RuntimeError(CLOSED))

    def _next_job(self) -> Optional[Call]:
        try:
            return self._jobs.popleft()
        except IndexError:
            return None

    def _needs_worker(self) -> bool:
        waiting = len(self._jobs)
        for worker in self._workers:
            job = worker.job
            if job is None or job.finished:
                waiting -= 1
                if waiting <= 0:
                    return False
        return waiting > 0 and self.connections < self.most

    def _add_worker_if_needed(self) -> None:
        if not self._needs_worker():
            return
        with self._lock:
            if self.closed or not self._needs_worker():
                return
            worker = _Worker()
            self._workers.append(worker)
            try:
                start_new_thread(self._work, (worker,))
            except BaseException as error:
                self._workers.remove(worker)
                if not (isinstance(error, RuntimeError) and self._workers):
                    raise  # no thread is left that could run the job

    def _work(self, worker: _Worker) -> None:
        with self._lock:
            if worker not in self._workers:
                return  # an interrupt hit _add_worker_if_needed()
            worker.thread = get_ident()
        connection: Optional[Connection] = None
        try:
            while True:
                job = self._next_job() if self._jobs else None
                if job is None:
                    if self.closed:
                        break
                    self._bell.wait()
                    continue
                worker.job = job
                if self._jobs:
                    self._add_worker_if_needed()
                connection = connection or self._connection_for(job)
                goes_on = connection is None or self._run(job, connection)
                worker.job = job = None  # an idle thread must not keep anything alive
                if not goes_on:
                    break
        except BaseException as error:  # out of memory, for instance
            if worker.job is not None:
                worker.job.fail(error)
        finally:
            if connection is not None:
                connection.end()
            del connection
            with self._lock:
                self._workers.remove(worker)
            worker.ended.release()

    def _connection_for(self, job: Call) -> Optional[Connection]:
        try:
            return self._spare.pop() if self._spare else Connection(self.settings)
        except BaseException as error:
            job.fail(error)
            return None

    def _run(self, job: Call, connection: Connection) -> bool:
        """Run the job. Returns whether the connection can be used again."""
        if self.closed:
            job.fail(RuntimeError(CLOSED))
        elif not job.wanted:
            return True
        else:
            return job.run(connection) and not self.closed
        return False


_pools: weakref.WeakSet[Pool] = weakref.WeakSet()


def _begin_anew() -> None:
    for pool in list(_pools):
        pool.begin_anew()


os.register_at_fork(after_in_child=_begin_anew)
