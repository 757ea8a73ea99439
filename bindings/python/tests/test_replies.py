# SPDX-License-Identifier: Apache-2.0
"""Replies of a server that breaks its own rules."""
import numpy as np
import pytest
import replies
from replies import CHAR, DOUBLE, LOGICAL, OBJECT, STRUCT, array, cell_array, double_array
from replies import sparse_array, struct_array

import hcyclient


def answer(client, *outputs):
    with replies.answering(replies.result(*outputs)) as url:
        return client.feval(url, nargout=len(outputs))


def refusal(client, *outputs):
    with pytest.raises(hcyclient.TransportError) as raised:
        answer(client, *outputs)
    assert type(raised.value) is hcyclient.TransportError
    return raised.value.text


def test_an_array_of_one_dimension_is_a_column(client):
    np.testing.assert_array_equal(answer(client, double_array([3], 1, 2, 3)), [[1], [2], [3]])


@pytest.mark.parametrize('message', [
    array(DOUBLE, [0, 1 << 63]), array(CHAR, [2, 0, 1 << 63]), cell_array([0, 1 << 63]),
    struct_array([0, 1 << 63], [b'a']), array(STRUCT, [1 << 40, 1]), array(STRUCT, [0, 1 << 63]),
    sparse_array([1 << 40, 2], [], [0, 0, 0], []),
], ids=range(7))
def test_shapes_that_no_array_has(client, message):
    assert refusal(client, message).startswith('output 0: the reply holds a')
    assert refusal(client, double_array([1, 1], 1), cell_array([1, 1], message)).startswith(
        'output 1, [0]: the reply holds a')


@pytest.mark.parametrize('message', [
    double_array([1] * 100, 1), double_array([0] * 100),
    cell_array([1] * 100, double_array([1, 1], 1)),
    struct_array([1] * 100, [b'a'], double_array([1, 1], 1)), array(CHAR, [1] * 100),
    array(LOGICAL, [1] * 100)
], ids=['double', 'empty', 'cell', 'struct', 'char', 'logical'])
def test_more_dimensions_than_numpy_has(client, message):
    assert refusal(client, message).startswith('output 0: the reply holds an array of 100 dim')


def test_a_class_that_is_not_served(client):
    with pytest.raises(hcyclient.TransportError, match='dispatch_on_QXType'):
        answer(client, double_array([1, 1], 1), array(OBJECT, [1, 1]), double_array([1, 1], 1))
    assert answer(client, double_array([1, 1], 5)).item() == 5


@pytest.mark.parametrize('rows', [[0, 0], [2, 1]])
def test_sparse_arrays_whose_rows_do_not_increase(client, rows):
    assert refusal(client, sparse_array([3, 1], rows, [0, 2], [1, 2])) == (
        'output 0: the reply holds a sparse array whose row indices do not increase within each '
        'column')


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
