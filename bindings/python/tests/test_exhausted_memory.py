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


def leave(mebibytes):
    now = int(open('/proc/self/statm').read().split()[0]) * resource.getpagesize()
    resource.setrlimit(resource.RLIMIT_AS, (now + (mebibytes << 20), resource.RLIM_INFINITY))


def require_memory_error(server, call):
    """In a process of its own: the limit that is set in it stays."""

    def run():
        with hcyclient.Client(response_size_limit=1 << 27, results='exact') as client:
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
    def call(client):
        leave(left)
        client.feval(server + '/echo', value, nargout=0)

    require_memory_error(server, call)


MANY = 1 << 25  # each of which takes a byte of the reply, and two or more of a copy


@pytest.mark.parametrize('message', [
    replies.array(replies.UINT8, [MANY // 2, 2], 16, replies.field(1, bytes(MANY)) + replies.field(
        2, bytes(MANY - 1) + b'\1')),
    replies.array(replies.CHAR, [2, MANY // 2], 27, replies.field(1, bytes(MANY))),
    replies.array(replies.SPARSE, [MANY // 2, 1], 30, replies.field(1, 1)
                  + replies.field(2, bytes(MANY // 2))
                  + replies.field(3, replies.packed([0, MANY // 2]))
                  + replies.field(17, replies.field(1, bytes(MANY // 2)))),
], ids=['complex', 'char', 'sparse'])
def test_outputs(server, message):
    """Memory runs out while an output that was read is copied."""
    from hcyclient._outputs import ExactReader
    values_of = ExactReader.values_of

    def limited(*arguments):
        leave(8)
        return values_of(*arguments)

    def call(client):
        ExactReader.values_of = limited  # in a process of its own
        client.feval(url)

    with replies.answering(replies.result(message)) as url:
        require_memory_error(server, call)
