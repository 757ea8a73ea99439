# SPDX-License-Identifier: Apache-2.0
"""Exhausted memory is a MemoryError, after which the client goes on."""
import multiprocessing
import resource
import sys

import numpy as np
import pytest
import replies

import hcyclient
from hcyclient import CompressedColumns

EXPECTED = 7


def require_memory_error(server, left, call):
    """In a process of its own, which has so many mebibytes left: the limit stays."""

    def run():
        now = int(open('/proc/self/statm').read().split()[0]) * resource.getpagesize()
        resource.setrlimit(resource.RLIMIT_AS, (now + (left << 20), resource.RLIM_INFINITY))
        with hcyclient.Client() as client:
            try:
                call(client)
            except MemoryError:
                assert client.feval(server + '/echo', 'next') == 'next'
                sys.exit(EXPECTED)

    process = multiprocessing.get_context('fork').Process(target=run)
    process.start()
    process.join()
    assert process.exitcode == EXPECTED


@pytest.mark.parametrize('value, left', [
    (np.broadcast_to(0.0, (2**14, 2**14)), 512),
    (np.broadcast_to(1j, (2**14, 2**13)), 512),
    (np.broadcast_to(np.int16(1), (2**14, 2**15)), 512),
    # Enough for a look at the rows, and not for the array.
    (CompressedColumns(np.broadcast_to(0.0, 2**24), np.arange(2**24, dtype='i4'),
                       np.array([0, 2**24]), (2**24, 1)), 352),
], ids=['real', 'complex', 'int16', 'sparse'])
def test_inputs(server, value, left):
    require_memory_error(
        server, left, lambda client: client.feval(server + '/echo', value, nargout=0))


@pytest.mark.parametrize('message, left', [
    (replies.double_array([1 << 25, 1]), 192),
    # Enough for row numbers, in 128 MiB, and not for the values that are missing.
    (replies.array(replies.SPARSE, [1 << 24, 1], 30, replies.field(2, bytes(1 << 24))
                   + replies.field(3, replies.packed([0, 1 << 24]))), 580),
], ids=['real', 'sparse'])
def test_outputs(server, message, left):
    with replies.answering(replies.result(message)) as url:
        require_memory_error(server, left, lambda client: client.feval(url))
