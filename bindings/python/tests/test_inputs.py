# SPDX-License-Identifier: Apache-2.0
"""Arguments of the types that users of Python have at hand."""
import array
import dataclasses
import typing

import numpy as np
import pandas
import pytest

import hcyclient


@pytest.fixture(scope='module')
def echo(server):
    with hcyclient.Client(server) as client:
        yield client.echo


NUMBERS = [
    [1, 2, 3], (1, 2, 3), [1.5, 2], [True, False], [1 + 2j, 3], [[1, 2], [3, 4]], [(1, 2), (3, 4)],
    [np.float32(1), np.float32(2)], [np.int8(1), np.int8(2)], [np.int64(2**60), np.int64(1)],
    [[[1, 2]], [[3, 4]]], [2**53, -2**53], [1, 2.5, True], [[], []],
    [2**60, 1], [2**70, 2.0],  # which doubles represent exactly
]


@pytest.mark.parametrize('sent', NUMBERS, ids=repr)
def test_a_list_of_numbers_is_what_numpy_makes_of_it(echo, sent):
    expected = np.array(sent)
    kinds = {type(one) for one in np.array(sent, object).flat}
    if int in kinds and expected.dtype.kind in 'iuO':
        expected = expected.astype(float)
    back = echo(sent)
    assert back.dtype == expected.dtype
    np.testing.assert_array_equal(back, expected)


@pytest.mark.parametrize('sent, expected', [
    (range(2, 8, 3), [2.0, 5]),
    (array.array('h', [1, -2]), np.array([1, -2], 'int16')),
    (array.array('d', [0.5]), 0.5),
    (memoryview(b'ab'), np.array([97, 98], 'uint8')),
    (memoryview(np.arange(6.0).reshape(2, 3)), np.arange(6.0).reshape(2, 3)),
    (np.array([0.5, 2], 'float16'), np.array([0.5, 2], 'float32')),
    (np.float16(0.5), np.float32(0.5)),
    (np.ma.masked_array([1.0, 2], [False, False]), [1.0, 2]),
    (np.ma.masked_array([1.0, 2]), [1.0, 2]),
    (pandas.Series([1.5, 2], index=['a', 'b']), [1.5, 2]),
    (pandas.Series([1, 2], dtype='int16'), np.array([1, 2], 'int16')),
    (pandas.Series([1, 2], dtype='Int32'), np.array([1, 2], 'int32')),
    (pandas.Series([True, False], dtype='boolean'), np.array([True, False])),
    (pandas.RangeIndex(3), np.array([0, 1, 2])),
    (pandas.Index([1.5, 2]), [1.5, 2]),
], ids=lambda value: str(value).replace('\n', ' '))
def test_other_arrays(echo, sent, expected):
    back = echo(sent)
    assert back.dtype == np.asarray(expected).dtype
    np.testing.assert_array_equal(back, expected)


class WithArray:
    def __array__(self, dtype=None, copy=None):
        return np.array([[1.0, 2]], dtype)


class WithInterface:
    values = np.array([3, 4], 'int8')
    __array_interface__ = values.__array_interface__


def test_whatever_numpy_makes_an_array_of(echo):
    assert echo(WithArray()).tolist() == [1, 2]
    assert echo(WithInterface()).tolist() == [3, 4]
    WithArray.__array__ = lambda *_, **more: np.array([{1}], object)
    with pytest.raises(TypeError, match='WithArray, whose array holds objects; use list'):
        echo(WithArray())


def test_texts_of_pandas_are_a_cell(echo):
    assert echo(pandas.Series(['a', 'bc'])) == ['a', 'bc']


def test_a_frame_is_a_struct_of_columns(echo):
    frame = pandas.DataFrame({'x': [1.5, 2], 'n': np.array([1, 2], 'int8'), 't': ['a', 'b']})
    back = echo(frame)
    assert list(back) == ['x', 'n', 't'] and back['t'] == ['a', 'b']
    assert back['x'].tolist() == [1.5, 2] and back['n'].dtype == np.int8
    with pytest.raises(TypeError, match=r"\['t'\]\[1\]: cannot convert object of type .*NAType"):
        echo(pandas.DataFrame({'t': pandas.Series(['a', pandas.NA], dtype=object)}))


class Point(typing.NamedTuple):
    x: float
    name: str


@dataclasses.dataclass
class Box:
    size: list
    lid: typing.Optional[Point] = None


def test_named_tuples_and_dataclasses_are_structs(echo):
    assert echo(Point(1.5, 'a')) == {'x': 1.5, 'name': 'a'}
    back = echo(Box([1, 2], Point(0, '')))
    assert back['size'].tolist() == [1, 2] and back['lid'] == {'x': 0, 'name': ''}
    assert echo([Point(1, 'a'), Point(2, 'b')]) == [{'x': 1, 'name': 'a'}, {'x': 2, 'name': 'b'}]
    assert type(echo([Point(1, 'a'), Box(1)])) is hcyclient.Cell
    with pytest.raises(TypeError, match='object of type type; use an instance of it'):
        echo(Box)


def test_what_is_sent_is_not_changed(echo):
    sent = [1, 2]
    echo({'a': sent})
    assert sent == [1, 2] and type(sent[0]) is int


def test_a_long_list_of_numbers_is_an_array(echo):
    assert echo(list(range(100_000))).sum() == sum(range(100_000))
