# SPDX-License-Identifier: Apache-2.0
"""The lines that are logged."""
import logging
import re
import threading
import time

import numpy as np
import pytest
import replies
import scipy.sparse

import hcyclient


@pytest.fixture
def logged(caplog):
    caplog.set_level(logging.DEBUG, 'hcyclient')
    return lambda: [record.getMessage() for record in caplog.records]


def test_a_call_is_a_line(server, client, logged):
    client.feval(server + '/echo', np.ones((3, 2)), 'ab', nargout=2)
    line, = logged()
    assert re.fullmatch(re.escape(server) + r'/echo: 0\.\d{6} s, 52 bytes sent, 52 bytes received, '
                        'succeeded', line)


@pytest.mark.parametrize('value, size', [
    (1j, 16), (True, 1), ([1, 'abc', {'a': np.zeros(3, 'int16')}], 8 + 6 + 6), ({}, 0), (None, 0),
    (scipy.sparse.identity(3, format='csc'), 24), (np.empty((2, 3), object), 0),
    ([{'a': 1.0}, {'a': 2.0}], 16)], ids=str)
def test_bytes_are_those_of_the_data(server, client, logged, value, size):
    client.feval(server + '/echo', value)
    assert f' {size} bytes sent, {size} bytes received' in logged()[0]


def test_failures(client, logged):
    with replies.answering(b'', 503) as url, pytest.raises(hcyclient.HttpError):
        client.feval(url.replace('//', '//user:secret@'))
    with pytest.raises(hcyclient.ConnectionError):
        client.feval('http://127.0.0.1:1/f')
    first, second = logged()
    assert first.startswith(url + ': ') and 'secret' not in first
    assert first.endswith('HttpError: HTTP status 503 Service Unavailable')
    assert 'ConnectionError: Could' in second


def test_an_abandoned_call(client, logged):
    asked, told = threading.Event(), threading.Event()
    with replies.answering(replies.result(), meanwhile=lambda: (asked.set(), told.wait())) as url:
        client.submit(url, nargout=0)
        asked.wait()
        client.close()
        told.set()
        deadline = time.monotonic() + 30
        while not logged():
            assert time.monotonic() < deadline
            time.sleep(0.01)
    assert logged()[0].endswith('succeeded, abandoned')


def test_dimensions_alone_are_no_data(client, logged):
    message = replies.cell_array([1 << 40, 1], replies.double_array([1 << 20, 1], 1))
    with replies.answering(replies.result(message)) as url:
        with pytest.raises(hcyclient.IncompleteReply):
            client.feval(url)
    assert ' 0 bytes received' in logged()[0]


def test_nothing_is_logged_unless_it_is_asked_for(server, client, caplog):
    caplog.set_level(logging.INFO, 'hcyclient')
    client.feval(server + '/echo', 1)
    assert not caplog.records
