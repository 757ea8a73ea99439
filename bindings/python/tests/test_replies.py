# SPDX-License-Identifier: Apache-2.0
"""Replies of a server that breaks its own rules."""
import numpy as np
import pytest
import replies
from replies import CHAR, DOUBLE, INT16, LOGICAL, OBJECT, STRUCT, UINT8, array, cell_array
from replies import double_array, doubles, field, packed, sparse_array, struct_array

import hcyclient


def answer(client, *outputs):
    with replies.answering(replies.result(*outputs)) as url:
        return client.feval(url, nargout=len(outputs))


@pytest.mark.parametrize('message, expected', [
    (double_array([2, 2], 1.5), [[1.5, 0], [0, 0]]),
    (array(DOUBLE, [3, 1]), [[0], [0], [0]]),
    (array(UINT8, [1, 3], 16, field(1, b'\x07')), [[7, 0, 0]]),
    (array(INT16, [1, 3], 19, field(1, packed([7]))), [[7, 0, 0]]),
    (array(LOGICAL, [1, 2], 26, field(1, packed([1]))), [[True, False]]),
    (array(DOUBLE, [1, 2], 25, field(1, doubles(1, 2)) + field(2, doubles(3))), [[1 + 3j, 2]]),
    (double_array([3], 1, 2, 3), [[1], [2], [3]]),
], ids=['double', 'none', 'uint8', 'int16', 'logical', 'complex', 'vector'])
def test_missing_elements_are_zero(client, message, expected):
    back = answer(client, message)
    np.testing.assert_array_equal(back, expected)


def test_missing_code_units_are_nul(client):
    assert answer(client, array(CHAR, [1, 3], 27, field(1, packed([65])))) == 'A\0\0'


def test_an_array_without_dimensions_is_nothing(client):
    assert answer(client, array(DOUBLE, [])) is None


@pytest.mark.parametrize('message', [
    array(DOUBLE, [1 << 31, 1 << 31]),
    array(UINT8, [1 << 31, 1]),
    array(DOUBLE, [0, 1 << 63]),
    array(CHAR, [2, 1 << 40]),
    array(LOGICAL, [(1 << 64) - 1, (1 << 64) - 1]),
    cell_array([1, 1 << 31]),
    struct_array([1, 1 << 31], [b'a']),
    struct_array([1, 1 << 20], [b'%d' % i for i in range(100)]),
    array(STRUCT, [1 << 40, 1]),
    sparse_array([2, 1 << 40], [], [], []),
    sparse_array([1 << 40, 2], [], [], []),
], ids=range(11))
def test_dimensions_that_no_reply_fills_take_no_memory(client, message):
    with pytest.raises(hcyclient.TransportError, match='the reply holds an? .*array of shape'):
        answer(client, message)


HALF_A_REPLY = array(UINT8, [1 << 25, 1])  # of the 64 MiB that one may have


@pytest.mark.parametrize('outputs', [
    [HALF_A_REPLY] * 3,
    [cell_array([1, 3], *[HALF_A_REPLY] * 3)],
    [cell_array([3, 1], *[HALF_A_REPLY] * 3)],
    [struct_array([1, 1], [b'a', b'b', b'c'], *[HALF_A_REPLY] * 3)],
    [cell_array([1, 3], *[sparse_array([2, 1 << 25], [], [], [])] * 3)],
], ids=['outputs', 'list', 'cells', 'fields', 'sparse'])
def test_nor_do_arrays_together_that_no_reply_fills(client, outputs):
    with pytest.raises(hcyclient.TransportError, match='more than a reply can hold'):
        answer(client, *outputs)


@pytest.mark.parametrize('message', [
    double_array([1] * 100, 1), double_array([0] * 100), cell_array([1] * 100, HALF_A_REPLY),
    struct_array([1] * 100, [b'a'], HALF_A_REPLY), array(CHAR, [1] * 100), array(LOGICAL, [1] * 100)
], ids=['double', 'empty', 'cell', 'struct', 'char', 'logical'])
def test_more_dimensions_than_numpy_has(client, message):
    with pytest.raises(hcyclient.TransportError, match='holds an array of 100 dimensions'):
        answer(client, message)


@pytest.mark.parametrize('message', [
    cell_array([1, 2], double_array([1, 1], 1)),
    cell_array([2, 2], double_array([1, 1], 1)),
    struct_array([1, 1], [b'a', b'b'], double_array([1, 1], 1)),
    struct_array([1, 2], [b'a'], double_array([1, 1], 1)),
    struct_array([2, 1], [b'a'], double_array([1, 1], 1)),
    cell_array([1, 1], array(OBJECT, [1, 1])),
], ids=range(6))
def test_missing_elements_of_containers(client, message):
    try:
        back = answer(client, message)
    except hcyclient.TransportError as error:
        assert error.text == 'the reply holds a container without one of its elements'
    else:
        pytest.fail(repr(back))


def test_a_class_that_is_not_served(client):
    with pytest.raises(hcyclient.TransportError, match='dispatch_on_QXType'):
        answer(client, double_array([1, 1], 1), array(OBJECT, [1, 1]), double_array([1, 1], 1))
    assert answer(client, double_array([1, 1], 5)).item() == 5


@pytest.mark.parametrize('rows, starts, values, dimensions', [
    ([5], [0, 1], [1], [3, 1]),
    ([0, 0], [0, 2], [1, 2], [3, 1]),
    ([2, 1], [0, 2], [1, 2], [3, 1]),
    ([0], [1, 1], [1], [3, 1]),
    ([0, 1], [0, 2, 1], [1, 2], [3, 2]),
    ([0, 1], [0, 1], [1, 2], [3, 3]),
    ([0], [0, 9], [1], [3, 1]),
    ([0], [0, 1 << 63], [1], [3, 1]),
    ([1 << 63], [0, 1], [1], [3, 1]),
])
def test_sparse_arrays_out_of_step(client, rows, starts, values, dimensions):
    try:
        back = answer(client, sparse_array(dimensions, rows, starts, values))
    except hcyclient.TransportError as error:
        assert 'the reply holds a sparse array' in error.text
    else:
        pytest.fail(repr(back))


def test_sparse_values_that_are_missing_are_zero(client):
    back = answer(client, sparse_array([3, 1], [0, 2], [0, 2], [1.5]))
    assert back.toarray().tolist() == [[1.5], [0], [0]] and back.data.tolist() == [1.5, 0]


def test_fields_of_one_name_are_the_first_of_them(client):
    numbers = [double_array([1, 1], value) for value in (1, 2, 3, 4)]
    back = answer(client, struct_array([1, 2], [b'a', b'a'], *numbers))
    assert [element['a'].item() for element in back] == [1, 3]


def test_an_empty_field_name(client):
    back = answer(client, struct_array([2, 1], [b''], *[double_array([1, 1], 1)] * 2))
    assert back.dtype.names == ('',) and back[1, 0][''].item() == 1


def test_a_reply_that_is_none(client):
    with replies.answering(b'<html>') as url:
        with pytest.raises(hcyclient.TransportError, match='Number of outputs received'):
            client.feval(url)
