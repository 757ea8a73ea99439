# SPDX-License-Identifier: Apache-2.0
"""What cannot be carried is named, with its place."""
import datetime
import decimal
import fractions

import numpy as np
import pandas
import pytest
import scipy.sparse

import hcyclient
from hcyclient import CompressedColumns

HOLDS_ITSELF = []
HOLDS_ITSELF.append(HOLDS_ITSELF)
NO_DOUBLE = ', which no double is equal to; write numpy.int64(x) or numpy.uint64(x) for that ' \
    'class, float(x) for the nearest double'
RAGGED = 'lists of numbers that differ in length; write Cell([...]) for a cell of them'
PARTS = '; write several calls with a part of it each'


@pytest.mark.parametrize('value, what', [
    ({1}, 'object of type set; write sorted(x) or list(x)'),
    (b'bytes', "object of type bytes; write .decode() for text, numpy.frombuffer(x, 'uint8') for "
               'numbers'),
    (datetime.date(2020, 1, 1), 'object of type datetime.date; write .isoformat() for text'),
    (datetime.timedelta(1), 'object of type datetime.timedelta; write .total_seconds()'),
    (fractions.Fraction(1, 3), 'object of type fractions.Fraction; write float(x)'),
    (decimal.Decimal(1), 'object of type decimal.Decimal; write float(x)'),
    (iter([1]), 'object of type list_iterator; write list(x)'),
    (Ellipsis, 'object of type ellipsis; write a number, text, array, list or dict'),
    (dict, 'object of type type; write an instance of it'),
    (np.ma.masked_array([1.0], [True]), 'masked array with masked elements; write .filled(x) with '
                                        'the number that stands for them'),
    (np.zeros(2, 'M8[s]'), "array of dtype datetime64[s]; write .astype('int64')"),
    (np.zeros(2, 'V3'), "array of dtype |V3; write .view('uint8')"),
    (np.longdouble(1), f"array of dtype {np.dtype(np.longdouble)}; write .astype('float64')"),
    ([np.longdouble(1)], f"array of dtype {np.dtype(np.longdouble)}; write .astype('float64')"),
    (np.clongdouble(1), f"array of dtype {np.dtype(np.clongdouble)}; write .astype('complex128')"),
    (np.zeros(2, 'm8[s]'), "array of dtype timedelta64[s]; write .astype('int64')"),
    (np.array(b'x'), "array of dtype |S1; write .astype('U')"),
    (np.array({1}, object), 'object of type set; write sorted(x) or list(x)'),
    (np.array([['ab']]), 'array of dtype <U2 in 2 dimensions: longer texts are carried in one '
                         'dimension; write .astype(object) for a cell of them'),
    (np.array([['\U0001F600']]), 'array of characters with one that takes two code units; write an '
                                 'array of strings in one dimension'),
    (np.array([0x110000], 'u4').view('U1'), 'array of texts with a number that is no character; '
                                            "write .view('uint32')"),
    (2**53 + 1, 'int 9007199254740993' + NO_DOUBLE),
    (10**400, 'int that is too large for a double; write str(x) for text'),
    ([[1, 2], [3]], RAGGED), ([1, [2, 3]], RAGGED), ([[[1]], [2]], RAGGED),
    ({1: 2}, 'key of type int: the name of a field is a str; write str(x)'),
    ({10**5000: 2}, 'key of type int: the name of a field is a str; write str(x)'),
    ({'a\0b': 2}, "key 'a\\x00b': the name of a field has no NUL; write a key without it"),
    ({'\ud800': 2}, "key '\\ud800': it is no text; write a key without surrogates"),
    (np.broadcast_to(0.0, (2**16, 2**16)),
     'array of shape (65536, 65536): it is too large' + PARTS),
    (np.empty((0, 2**31)), 'array of shape (0, 2147483648): it is too large' + PARTS),
    (np.empty((2**16, 2**16), []), 'array of shape (65536, 65536): it is too large' + PARTS),
    (HOLDS_ITSELF, 'what is nested too deeply, or holds itself; write less of it'),
    (scipy.sparse.csc_matrix(np.eye(2, dtype='i4')),
     'sparse matrix of dtype int32: only float64, complex128 and bool are carried; write '
     ".astype('float64')"),
    (scipy.sparse.csc_matrix((2**31, 1)),
     'sparse matrix of shape (2147483648, 1): it is too large' + PARTS),
    (pandas.DataFrame([[1, 2]], columns=['a', 'a']),
     'DataFrame with two columns of one name; write .rename(columns=...)'),
    (pandas.Series([1, None], dtype='Int64'), 'Series of dtype Int64 with missing values; write '
                                              ".to_numpy(float, na_value=float('nan'))"),
])
def test_it_is_named(echo, value, what):
    with pytest.raises(TypeError) as raised:
        echo(value)
    assert str(raised.value) == 'argument 1: cannot carry ' + what


@pytest.mark.parametrize('data, indices, indptr, shape, what', [
    ([1.0], [7], [0, 1], (3, 1), 'whose rows and columns make no sense'),
    ([1.0], [0], [0, 2], (3, 1), 'whose rows and columns make no sense'),
    ([1.0, 2], [0], [0, 2], (3, 1), 'whose rows and columns make no sense'),
    ([1.0], [0, 1], [0, 2], (3, 1), 'whose rows and columns make no sense'),
    ([1.0], [0], [0, -1], (3, 1), 'whose rows and columns make no sense'),
    ([1.0], [0], [], (3, 1), 'whose rows and columns make no sense'),
    ([1.0], [0.5], [0, 1], (3, 1), 'whose parts are not lists of values, rows and columns'),
    ([1.0], [0], [0, 1.0], (3, 1), 'whose parts are not lists of values, rows and columns'),
    ([1.0], [0], 0, (3, 0), 'whose parts are not lists of values, rows and columns'),
    ([[1.0]], [0], [0, 1], (3, 1), 'whose parts are not lists of values, rows and columns'),
    (1.0, [0], [0, 1], (3, 1), 'whose parts are not lists of values, rows and columns'),
    ([], [], [0], (-1, 0), 'of shape (-1, 0)'),
    ([], [], [], (0, -1), 'of shape (0, -1)'),
    ([], [], [0], (0, 2**31 - 1), 'of shape (0, 2147483647): it is too large'),
    ([], [], [0, 0], (1.0, 1), 'whose shape is not two whole numbers'),
    ([], [], [0, 0], (1, 1, 1), 'whose shape is not two whole numbers'),
    ([], [], [0, 0], None, 'whose shape is not two whole numbers'),
])
def test_sparse_matrices_that_make_no_sense(echo, data, indices, indptr, shape, what):
    parts = [np.asarray(part) for part in (data, indices, indptr)]
    with pytest.raises(TypeError) as raised:
        echo(CompressedColumns(*parts, shape))
    advice = 'several calls with a part of it each' if 'too large' in what else (
        'scipy.sparse.csc_matrix(...), which checks what it is made of')
    assert str(raised.value) == f'argument 1: cannot carry sparse matrix {what}; write {advice}'


@pytest.mark.parametrize('value, place', [
    ({'a': [1, 2, 3, {4}]}, "['a'][3]"),
    ([1, [2, ({3},)]], '[1][1][0]'),
    ([{'a': 1}, {'a': {2}}], "[1]['a']"),
    (np.array([[None, None], [{1}, None]], object), '[1, 0]'),
    (np.array([(1, {2})], [('x', 'f8'), ('y', object)]), "[0]['y']"),
    ([{'a': 1}, {'b': {2}}], "[1]['b']"),
    (hcyclient.Cell([{1}]), '[0]'),
    ([np.array({1}, object)], '[0]'),
    (np.array(({1},), [('x', object)]), "['x']"),
])
def test_its_place_is_named(echo, value, place):
    with pytest.raises(TypeError) as raised:
        echo(1, value)
    assert str(raised.value) == (
        f'argument 2: {place}: cannot carry object of type set; write sorted(x) or list(x)')


@pytest.mark.parametrize('value, place', [
    ([2**53 + 1], '[0]'), ([[1, 2], [3, 2**53 + 1]], '[1][1]'), ([0.5, 2**53 + 1], '[1]'),
    ([1j, 2**53 + 1], '[1]'), ([1, 10**400], '[1]'), ([2**64 + 1, -1], '[0]'),
    (range(2**53, 2**53 + 2), '[1]')])
def test_an_integer_in_a_list_that_no_double_is_equal_to(echo, value, place):
    with pytest.raises(TypeError) as raised:
        echo(value)
    assert str(raised.value).startswith(f'argument 1: {place}: cannot carry int ')


def test_the_argument_that_holds_itself_is_named(echo):
    with pytest.raises(TypeError, match='^argument 3: cannot carry what is nested too deeply'):
        echo(1, 2, HOLDS_ITSELF)


def test_a_refusal_leaves_the_client_usable(echo):
    with pytest.raises(TypeError):
        echo([1, {2}])
    assert echo('next') == 'next'
