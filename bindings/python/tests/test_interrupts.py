# SPDX-License-Identifier: Apache-2.0
"""An interrupt during a call is delivered after it, and nothing is lost with it."""
import signal
import subprocess
import sys
import threading
import time

import pytest
import replies


@pytest.mark.parametrize('status', [200, 500])
def test_it_is_delivered_after_the_call(client, status):
    answered = []

    def interrupt():
        signal.pthread_kill(threading.main_thread().ident, signal.SIGINT)
        time.sleep(0.2)
        answered.append(True)

    body = replies.result(replies.double_array([1, 1], 5))
    with replies.answering(body, status, meanwhile=interrupt) as url:
        with pytest.raises(KeyboardInterrupt):
            client.feval(url)
        assert answered
    with replies.answering(body) as url:
        assert client.feval(url).item() == 5


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
