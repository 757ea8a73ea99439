# SPDX-License-Identifier: Apache-2.0
"""An interrupt during a call is delivered after it, and nothing is lost with it."""
import signal
import subprocess
import sys
import threading
import time

import pytest

import hcyclient


def interrupt_after(seconds):
    main = threading.main_thread().ident
    timer = threading.Timer(seconds, signal.pthread_kill, (main, signal.SIGINT))
    timer.start()
    return timer


def test_it_is_delivered_after_the_call(server, client):
    timer = interrupt_after(0.2)
    start = time.monotonic()
    with pytest.raises(KeyboardInterrupt):
        client.feval(server + '/demo/sleep', 0.8)
    assert 0.75 < time.monotonic() - start < 5
    timer.join()
    assert client.feval(server + '/echo', 'next') == 'next'


def test_it_is_delivered_after_a_call_that_fails(server):
    with hcyclient.Client(timeout=1) as client:
        timer = interrupt_after(0.2)
        with pytest.raises(KeyboardInterrupt):
            client.feval(server + '/demo/sleep', 30)
        timer.join()
        assert client.feval(server + '/echo', 'next') == 'next'


# Interrupts at any moment of calls, each with a mebibyte in and two out. One that was lost on the
# way would be seen as the memory of an array, or as a client that stays in use.
MANY = '''
import random, resource, signal, sys
import numpy as np, hcyclient

sent = np.ones(1 << 17)
delivered, received = 0, 0
random.seed(1)

def interrupt(*_):
    global delivered
    delivered += 1
    raise KeyboardInterrupt

def resident():
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


def test_many_lose_no_array_and_leave_the_client_usable(server):
    outcome = subprocess.run([sys.executable, '-c', MANY, server, '250'], check=True,
                             stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    lost, grown = map(int, outcome.stdout.split())
    assert lost == 0 and outcome.stderr == ''
    assert grown < 40
