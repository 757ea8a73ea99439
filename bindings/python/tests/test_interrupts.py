# SPDX-License-Identifier: Apache-2.0
"""An interrupt ends a call at once, and nothing is lost with it."""
import contextlib
import os
import signal
import subprocess
import sys
import threading
import time

import pytest
import replies

import hcyclient


class Alarm(Exception):
    pass


@contextlib.contextmanager
def alarm_after(seconds):
    def ring(*_):
        raise Alarm
    before = signal.signal(signal.SIGALRM, ring)
    signal.setitimer(signal.ITIMER_REAL, seconds)
    try:
        yield
    finally:
        signal.setitimer(signal.ITIMER_REAL, 0)
        signal.signal(signal.SIGALRM, before)


@contextlib.contextmanager
def held():
    """The URL of a server that answers when it is told; what tells it, and when it was asked."""
    asked, told = threading.Event(), threading.Event()

    def hold():
        asked.set()
        told.wait(60)

    with replies.answering(replies.result(replies.double_array([1, 1], 5)), meanwhile=hold) as url:
        try:
            yield url, asked, told
        finally:
            told.set()


def test_ctrl_c_ends_a_call(client):
    with held() as (url, asked, told):
        def interrupt():
            asked.wait()
            sent.append(time.monotonic())
            signal.pthread_kill(threading.main_thread().ident, signal.SIGINT)

        sent = []
        thread = threading.Thread(target=interrupt)
        thread.start()
        with pytest.raises(KeyboardInterrupt):
            client.feval(url)
        assert time.monotonic() - sent[0] < 0.1
        thread.join()
        told.set()
        assert client.feval(url).item() == 5


def test_what_a_handler_raises_ends_a_call(server):
    with hcyclient.Client(server, connections=1) as client:
        for _ in range(3):
            start = time.monotonic()
            with pytest.raises(Alarm), alarm_after(0.1):
                client.demo.sleep(900)
            assert 0.1 <= time.monotonic() - start < 0.2
            assert client.math.plus(2, 3) == 5  # on another connection
            assert client._pool.connections == 1


def test_a_handler_that_raises_nothing_ends_no_call(client):
    rung = []
    signal.signal(signal.SIGALRM, lambda *_: (rung.append(1), told.set()))
    with held() as (url, asked, told):
        signal.setitimer(signal.ITIMER_REAL, 0.1)
        assert client.feval(url).item() == 5 and rung == [1]


def test_an_abandoned_connection_ends_by_itself(client):
    files = len(os.listdir('/proc/self/fd'))
    with held() as (url, asked, told):
        with pytest.raises(Alarm), alarm_after(0.1):
            client.feval(url)
        assert client._pool.connections == 0 and len(client._pool._workers) == 1
        told.set()
        deadline = time.monotonic() + 30
        while client._pool._workers:
            assert time.monotonic() < deadline
            time.sleep(0.01)
    assert len(os.listdir('/proc/self/fd')) <= files


def test_a_signal_handler_may_call(server, client):
    back = []
    signal.signal(signal.SIGALRM, lambda *_: back.append(client.feval(server + '/echo', 'x')))
    signal.setitimer(signal.ITIMER_REAL, 0.1)
    client.feval(server + '/demo/sleep', 0.3, nargout=0)
    assert back == ['x']


# Interrupts at any moment of calls, each with a mebibyte in and two out. One that was lost on the
# way would be seen as the memory of an array, or as a client that stays in use.
MANY = '''
import ctypes, random, resource, signal, sys, time
import numpy as np, hcyclient

sent = np.ones(1 << 17)
delivered, received = 0, 0
random.seed(1)

def interrupt(*_):
    global delivered
    delivered += 1
    raise KeyboardInterrupt

def resident():
    while any(not worker.is_idle() for worker in list(client._pool._workers)):
        time.sleep(0.01)
    ctypes.CDLL(None).malloc_trim(0)
    return int(open('/proc/self/statm').read().split()[1]) * resource.getpagesize() >> 20

signal.signal(signal.SIGALRM, interrupt)
with hcyclient.Client() as client:
    echo = client.function(sys.argv[1] + '/echo')
    for i in range(20):
        echo(sent, sent, nargout=2)
    before = resident()
    for i in range(int(sys.argv[2])):
        try:
            signal.setitimer(signal.ITIMER_REAL, random.uniform(1e-5, 6e-3))
            for _ in range(1000):
                echo(sent, nargout=1)
                echo(sent, [sent], nargout=2)
        except KeyboardInterrupt:
            received += 1
    client.feval(sys.argv[1] + '/echo', 1)
    print(delivered - received, resident() - before)
'''


# HCY_LONG is how many interrupts there are.
ROUNDS = os.environ.get('HCY_LONG', '250')


def test_many_lose_no_array_and_leave_the_client_usable(server):
    # Of several arenas, malloc would keep what one thread freed from another one.
    outcome = subprocess.run([sys.executable, '-c', MANY, server, ROUNDS], check=True,
                             stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                             env={**os.environ, 'MALLOC_ARENA_MAX': '1'})
    lost, grown = map(int, outcome.stdout.split())
    assert lost == 0 and outcome.stderr == ''
    assert grown < 40
