# SPDX-License-Identifier: Apache-2.0
"""One client for many threads, and many calls at once."""
import concurrent.futures
import gc
import itertools
import threading
import time

import numpy as np
import pytest
import replies

import hcyclient

FIVE = replies.result(replies.double_array([1, 1], 5))


class Gate:
    """A server that answers when it is opened, and counts who is waiting."""

    def __init__(self):
        self.waiting = threading.Semaphore(0)
        self.opened = threading.Event()

    def hold(self):
        self.waiting.release()
        self.opened.wait(60)

    def await_calls(self, count):
        for _ in range(count):
            assert self.waiting.acquire(timeout=60)


@pytest.fixture
def gate():
    made = Gate()
    with replies.answering(FIVE, meanwhile=made.hold) as made.url:
        yield made
        made.opened.set()


def in_threads(count, function):
    with concurrent.futures.ThreadPoolExecutor(count) as executor:
        return list(executor.map(function, range(count)))


def test_threads_share_a_client(server):
    def work(number):
        return [client.feval('echo', np.full((3, 3), number), [str(number)], nargout=2)
                for _ in range(25)]

    with hcyclient.Client(server, connections=3) as client:
        for number, results in enumerate(in_threads(12, work)):
            for matrix, (text,) in results:
                assert (matrix == number).all() and text == str(number)
        assert client._pool.connections <= 3


def test_connections_are_made_when_they_are_needed(server):
    with hcyclient.Client(server) as client:
        assert client._pool.connections == 0
        for _ in range(20):
            client.math.plus(1, 2)
        assert client._pool.connections == 1


def test_as_many_calls_are_under_way_as_there_are_connections(gate):
    with hcyclient.Client(connections=3) as client:
        futures = [client.submit(gate.url) for _ in range(5)]
        gate.await_calls(3)
        assert not gate.waiting.acquire(timeout=0.1)
        assert client._pool.connections == 3
        gate.opened.set()
        assert [future.result() for future in futures] == [5] * 5


def test_closing_ends_calls_for_those_who_wait(gate):
    client = hcyclient.Client(connections=2)
    outcomes = []

    def call():
        try:
            client.feval(gate.url)
        except RuntimeError as error:
            outcomes.append(str(error))

    threads = [threading.Thread(target=call) for _ in range(4)]
    futures = [client.submit(gate.url)]
    for thread in threads:
        thread.start()
    gate.await_calls(2)
    while len(client._pool._jobs) < 3:  # the others wait
        time.sleep(0.01)
    start = time.monotonic()
    client.close()
    for thread in threads:
        thread.join()
    with pytest.raises(RuntimeError, match='this client was closed during the call'):
        futures[0].result()
    assert time.monotonic() - start < 2
    assert outcomes == ['this client was closed during the call'] * 4
    with pytest.raises(RuntimeError, match='this client is closed'):
        client.submit(gate.url)


def test_closing_waits_for_idle_connections(server, monkeypatch):
    client = hcyclient.Client(server)
    client.math.plus(2, 3)
    runtime, ended = client._pool._runtime, []
    destroy = runtime.destroy_context
    monkeypatch.setattr(runtime, 'destroy_context', lambda context: (
        time.sleep(0.2), destroy(context), ended.append(1)))
    client.close()
    assert ended == [1]


def test_a_future(server):
    with hcyclient.Client(server) as client:
        future = client.submit('math/plus', 2, 3)
        assert isinstance(future, concurrent.futures.Future) and future.result() == 5
        assert client.submit(client.echo, 'a', 'b', nargout=2).result() == ('a', 'b')
        assert client.submit('echo', 1, results='exact').result().shape == (1, 1)
        assert client.submit('echo', nargout=0).result() is None
        assert isinstance(client.submit('no/such').exception(), hcyclient.HttpError)
        assert isinstance(client.submit('echo', {1}).exception(), TypeError)
        with pytest.raises(ValueError):
            client.submit('echo', nargout=-1)


def test_a_future_that_waits_can_be_cancelled(gate):
    with hcyclient.Client(connections=1) as client:
        first, second = client.submit(gate.url), client.submit(gate.url)
        gate.await_calls(1)
        assert not first.cancel() and second.cancel()
        gate.opened.set()
        assert first.result() == 5
        assert client.feval(gate.url) == 5
        assert gate.waiting.acquire() and not gate.waiting.acquire(timeout=0)


def test_a_future_keeps_its_client_open(server):
    future = hcyclient.Client(server).submit('demo/sleep', 0.2, nargout=0)
    gc.collect()
    assert future.result() is None


def test_what_is_called_when_a_future_is_done_may_call(server):
    with hcyclient.Client(server) as client:
        seen = concurrent.futures.Future()
        client.submit('math/plus', 1, 2).add_done_callback(
            lambda future: seen.set_result(client.math.plus(future.result(), 4)))
        assert seen.result(60) == 7


def test_map_gives_results_in_order(server):
    seen = []
    with hcyclient.Client(server) as client:
        results = client.map('math/plus', range(50), itertools.count(10),
                             progress=lambda done, total: seen.append((done, total)))
        assert list(results) == [10 + 2 * i for i in range(50)]
        assert seen == [(i + 1, None) for i in range(50)]
        seen.clear()
        assert list(client.map(client.echo, ['a', 'b'], workers=1, progress=lambda *now:
                               seen.append(now))) == ['a', 'b']
        assert seen == [(1, 2), (2, 2)]
        assert [len(pair) for pair in client.map('echo', 'ab', 'cd', nargout=2)] == [2, 2]
        assert list(client.map('echo', [])) == []


def test_map_reads_no_further_than_it_must(gate):
    read = []

    def arguments():
        for i in itertools.count():
            read.append(i)
            yield i

    with hcyclient.Client(connections=4) as client:
        results = client.map(gate.url, arguments(), workers=2)
        gate.await_calls(2)  # before a result is asked for
        assert read == [0, 1] and not gate.waiting.acquire(timeout=0.1)
        gate.opened.set()
        assert next(results) == 5 and len(read) == 3


def test_map_stops_at_the_first_failure(server):
    with hcyclient.Client(server, connections=2) as client:
        results = client.map('demo/sleep', [0.01, 'no number', *[900] * 5], nargout=0)
        assert next(results) is None
        with pytest.raises(hcyclient.FunctionError):
            next(results)
        assert list(results) == []
        assert client.math.plus(2, 3) == 5  # the connections of the others are replaced


def test_a_map_that_is_left_early(server):
    with hcyclient.Client(server, connections=2) as client:
        results = client.map('demo/sleep', [0.01, 900, 900, 900], nargout=0)
        next(results)
        del results
        gc.collect()
        assert client.math.plus(2, 3) == 5


@pytest.mark.parametrize('workers, kind', [(0, ValueError), (1.5, TypeError)])
def test_a_map_that_makes_no_sense(server, workers, kind):
    with hcyclient.Client(server) as client:
        with pytest.raises(kind, match='workers must be '):
            client.map('echo', [1], workers=workers)
        with pytest.raises(TypeError, match='at least one iterable'):
            client.map('echo')


def test_a_connection_that_cannot_be_made_fails_the_call(server, monkeypatch):
    with hcyclient.Client(server) as client:
        client._pool._spare.pop().end()
        with monkeypatch.context() as patch:
            patch.setattr(client._pool._runtime, 'create_context', lambda *_: 1)
            with pytest.raises(hcyclient.Error, match='not enough memory for a connection'):
                client.math.plus(2, 3)
        assert client.math.plus(2, 3) == 5


@pytest.mark.parametrize('begin', ['feval', 'submit'])
def test_a_thread_that_fails_fails_its_call(server, monkeypatch, begin):
    from hcyclient._pool import Pool

    def fail(*_):
        raise MemoryError

    with hcyclient.Client(server) as client:
        with monkeypatch.context() as patch:
            patch.setattr(Pool, '_run', fail)
            with pytest.raises(MemoryError):
                client.feval('math/plus', 2, 3) if begin == 'feval' else (
                    client.submit('math/plus', 2, 3).result(60))
        assert client.math.plus(2, 3) == 5


def test_a_thread_that_cannot_be_started_fails_the_call(server, monkeypatch):
    from hcyclient import _pool

    def refuse(*_):
        raise RuntimeError("can't start new thread")

    with hcyclient.Client(server) as client:
        with monkeypatch.context() as patch:
            patch.setattr(_pool, 'start_new_thread', refuse)
            with pytest.raises(RuntimeError, match='new thread'):
                client.math.plus(2, 3)
        assert client.math.plus(2, 3) == 5
