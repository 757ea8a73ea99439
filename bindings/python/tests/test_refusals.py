# SPDX-License-Identifier: Apache-2.0
"""What cannot be carried is named, with its place."""
import datetime
import resource

import numpy as np
import pytest
import scipy.sparse

import hcyclient
from hcyclient import CompressedColumns

HOLDS_ITSELF = []
HOLDS_ITSELF.append(HOLDS_ITSELF)


@pytest.mark.parametrize('value, what', [
    ({1}, 'object of type set'),
    (b'bytes', 'object of type bytes'),
    (datetime.date(2020, 1, 1), 'object of type datetime.date'),
    (np.ma.masked_array([1.0], [True]), 'object of type numpy.ma.core.MaskedArray'),
    (np.float16(1), 'array of dtype float16'),
    (np.zeros(2, 'M8[s]'), 'array of dtype datetime64[s]'),
    (np.zeros(2, 'V3'), 'array of dtype |V3'),
    (np.array(b'x'), 'array of dtype |S1'),
    (np.array([['ab']]), 'array of dtype <U2 in 2 dimensions: longer texts are carried in one '
                         'dimension'),
    (np.array([['\U0001F600']]), 'array of characters with one that takes two code units'),
    (2**53 + 1, 'int 9007199254740993, which no double is equal to: say which class by '
                'numpy.int64 or numpy.uint64'),
    (10**400, 'int that is too large for a double'),
    ({1: 2}, 'key 1: the name of a field is a str'),
    ({'a\0b': 2}, "key 'a\\x00b': the name of a field has no NUL"),
    ({'\ud800': 2}, "key '\\ud800': it is no text"),
    (np.broadcast_to(0.0, (2**16, 2**16)), 'array of shape (65536, 65536): it is too large'),
    (np.empty((0, 2**31)), 'array of shape (0, 2147483648): it is too large'),
    (np.empty((2**16, 2**16), []), 'array of shape (65536, 65536): it is too large'),
    (HOLDS_ITSELF, 'what is nested too deeply, or holds itself'),
    (scipy.sparse.csc_matrix(np.eye(2, dtype='i4')),
     'sparse matrix of dtype int32: only float64, complex128 and bool are carried'),
    (CompressedColumns(np.ones(1), np.array([7]), np.array([0, 1]), (3, 1)),
     'sparse matrix whose rows and columns make no sense'),
    (scipy.sparse.csc_matrix((2**31, 1)), 'sparse matrix of shape (2147483648, 1): it is too large'),
])
def test_it_is_named(echo, value, what):
    with pytest.raises(TypeError) as raised:
        echo(value)
    assert str(raised.value) == 'argument 1: cannot carry ' + what


@pytest.mark.parametrize('value, place', [
    ({'a': [1, 2, 3, {4}]}, "['a'][3]"),
    ([1, [2, ({3},)]], '[1][1][0]'),
    ([{'a': 1}, {'a': {2}}], "[1]['a']"),
    (np.array([[None, None], [{1}, None]], object), '[1, 0]'),
    (np.array([(1, {2})], [('x', 'f8'), ('y', object)]), "[0]['y']"),
    ([{'a': 1}, {'b': {2}}], "[1]['b']"),
    (hcyclient.Cell([{1}]), '[0]'),
])
def test_its_place_is_named(echo, value, place):
    with pytest.raises(TypeError) as raised:
        echo(1, value)
    assert str(raised.value) == f'argument 2: {place}: cannot carry object of type set'


def test_a_refusal_leaves_the_client_usable(echo):
    with pytest.raises(TypeError):
        echo([1, {2}])
    assert echo('next') == 'next'


@pytest.mark.parametrize('value, left', [
    (np.broadcast_to(0.0, (2**14, 2**14)), 512),
    (np.broadcast_to(1j, (2**14, 2**13)), 512),
    (np.broadcast_to(np.int16(1), (2**14, 2**15)), 512),
    # Enough for a look at the rows, and not for the array.
    (CompressedColumns(np.broadcast_to(0.0, 2**24), np.arange(2**24, dtype='i4'),
                       np.array([0, 2**24]), (2**24, 1)), 352),
], ids=['real', 'complex', 'int16', 'sparse'])
def test_exhausted_memory_is_a_memory_error(server, value, left):
    """In a process of its own, which has so many mebibytes left: the limit stays."""
    import multiprocessing
    import sys

    def run():
        now = int(open('/proc/self/statm').read().split()[0]) * resource.getpagesize()
        resource.setrlimit(resource.RLIMIT_AS, (now + (left << 20), resource.RLIM_INFINITY))
        with hcyclient.Client() as client:
            try:
                client.feval(server + '/echo', value, nargout=0)
            except MemoryError:
                assert client.feval(server + '/echo', 'next') == 'next'
                sys.exit(7)

    process = multiprocessing.get_context('fork').Process(target=run)
    process.start()
    process.join()
    assert process.exitcode == 7
