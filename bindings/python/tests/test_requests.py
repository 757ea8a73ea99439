# SPDX-License-Identifier: Apache-2.0
"""What a server gets to see, where what comes back from an echo does not tell."""
import collections

import numpy as np
import pytest
import replies
import scipy.sparse
from hcyclient import Cell
from replies import CELL, CHAR, DOUBLE, LOGICAL, STRUCT, array, double_array, field, result

Point = collections.namedtuple('Point', 'x y')


def requested(client, *arguments, nargout=0):
    heard = []
    reply = result(*[double_array([1, 1], 1)] * nargout)
    with replies.answering(reply, heard=heard.append) as url:
        client.feval(url, *arguments, nargout=nargout)
    return heard[0]


@pytest.mark.parametrize('value, kind, shape', [
    (None, DOUBLE, [0, 0]),
    (1, DOUBLE, [1, 1]),
    (True, LOGICAL, [1, 1]),
    (np.zeros(3), DOUBLE, [3, 1]),
    ('', CHAR, [0, 0]),
    ('ab', CHAR, [1, 2]),
    (np.array(['abc', 'd']), CHAR, [2, 3]),
    ([], DOUBLE, [0, 0]),
    ((), DOUBLE, [0, 0]),
    ([1, 2], DOUBLE, [2, 1]),
    ([[1, 2, 3], (4, 5, 6)], DOUBLE, [2, 3]),
    ([[]], DOUBLE, [1, 0]),
    ([True, False], LOGICAL, [2, 1]),
    ([[[1], [2]]], DOUBLE, [1, 2, 1]),
    (range(4), DOUBLE, [4, 1]),
    (range(0), DOUBLE, [0, 0]),
    (Cell(), CELL, [0, 0]),
    (Cell([1, 2]), CELL, [1, 2]),
    ([1, 'a'], CELL, [1, 2]),
    ([np.ones(2), np.ones(2)], CELL, [1, 2]),
    ([None], CELL, [1, 1]),
    (Point(1, 2), STRUCT, [1, 1]),
    ([Point(1, 2), {'x': 3, 'y': 4}], STRUCT, [1, 2]),
    (np.empty((0, 0), object), CELL, [0, 0]),
    ({}, STRUCT, [1, 1]),
    ([{'a': 1}, {'a': 2}], STRUCT, [1, 2]),
    (np.empty((2**15, 2**15), []), STRUCT, [2**15, 2**15]),  # none of which is looked at
], ids=repr)
def test_class_and_shape(client, value, kind, shape):
    assert array(kind, shape) in requested(client, value)


def test_complex_arrays_without_elements_are_real(client):
    for shape in (0, 0), (0, 3), (2, 0, 3):
        assert requested(client, np.empty(shape, 'c16')) == requested(client, np.empty(shape))
    empty = scipy.sparse.csc_matrix((2, 3))
    assert requested(client, empty.astype('c16')) == requested(client, empty)


@pytest.mark.parametrize('nargout', [0, 1, 2])
def test_how_many_outputs_are_wanted(client, nargout):
    assert requested(client, nargout=nargout) == (field(1, nargout))


def test_names_in_any_bytes_go_back_as_they_came(client):
    message = replies.struct_array([1, 1], [b'\xff\xfe'], double_array([1, 1], 1))
    with replies.answering(result(message)) as url:
        came = client.feval(url)
    assert list(came) == ['\udcff\udcfe']
    assert field(1, b'\xff\xfe') in requested(client, came)
