# SPDX-License-Identifier: Apache-2.0
"""What cannot be converted is named, with its place."""
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
NO_DOUBLE = ', which a double cannot represent exactly; use numpy.int64(x) or numpy.uint64(x) to ' \
    'keep it, float(x) for the nearest double'
RAGGED = 'lists of numbers that differ in length; use Cell([...]) for a cell array'
WRONG_PARTS = 'whose data, indices or indptr is not one-dimensional, or has the wrong type'
TOO_LARGE = ': it is too large; use several calls, each with a part of it'


@pytest.mark.parametrize('value, what', [
    ({1}, 'object of type set; use sorted(x) or list(x)'),
    (b'bytes', "object of type bytes; use .decode() for a string, numpy.frombuffer(x, 'uint8') for "
               'numbers'),
    (datetime.date(2020, 1, 1), 'object of type datetime.date; use .isoformat() for a string'),
    (datetime.timedelta(1), 'object of type datetime.timedelta; use .total_seconds()'),
    (fractions.Fraction(1, 3), 'object of type fractions.Fraction; use float(x)'),
    (decimal.Decimal(1), 'object of type decimal.Decimal; use float(x)'),
    (iter([1]), 'object of type list_iterator; use list(x)'),
    (Ellipsis, 'object of type ellipsis; use a number, string, array, list or dict'),
    (dict, 'object of type type; use an instance of it'),
    (np.ma.masked_array([1.0], [True]),
     'masked array with masked elements; use .filled(x), where x replaces the masked elements'),
    (np.zeros(2, 'M8[s]'), "array of dtype datetime64[s]; use .astype('int64')"),
    (np.zeros(2, 'V3'), "array of dtype |V3; use .view('uint8')"),
    (np.longdouble(1), f"array of dtype {np.dtype(np.longdouble)}; use .astype('float64')"),
    ([np.longdouble(1)], f"array of dtype {np.dtype(np.longdouble)}; use .astype('float64')"),
    (np.clongdouble(1), f"array of dtype {np.dtype(np.clongdouble)}; use .astype('complex128')"),
    (np.zeros(2, 'm8[s]'), "array of dtype timedelta64[s]; use .astype('int64')"),
    (np.array(b'x'), "array of dtype |S1; use .astype('U')"),
    (np.array({1}, object), 'object of type set; use sorted(x) or list(x)'),
    (np.array([['ab']]),
     'array of dtype <U2 with 2 dimensions: strings of more than one character must be in a '
     'one-dimensional array; use .astype(object) for a cell array'),
    (np.array([['\U0001F600']]),
     'array of single characters, one of which takes two code units; use a one-dimensional array '
     'of strings'),
    (np.array([0x110000], 'u4').view('U1'), 'array of strings with a code point that is not a '
                                            "Unicode character; use .view('uint32')"),
    (2**53 + 1, 'int 9007199254740993' + NO_DOUBLE),
    (10**400, 'int that is too large for a double; use str(x) for a string'),
    ([[1, 2], [3]], RAGGED), ([1, [2, 3]], RAGGED), ([[[1]], [2]], RAGGED),
    ({1: 2}, 'key of type int: field names must be strings; use str(x)'),
    ({10**5000: 2}, 'key of type int: field names must be strings; use str(x)'),
    ({'a\0b': 2}, "key 'a\\x00b': field names cannot contain NUL; use a key without NUL"),
    ({'\ud800': 2}, "key '\\ud800': it is not valid Unicode; use a key without surrogates"),
    (np.broadcast_to(0.0, (2**16, 2**16)),
     'array of shape (65536, 65536)' + TOO_LARGE),
    (np.empty((0, 2**31)), 'array of shape (0, 2147483648)' + TOO_LARGE),
    (np.empty((2**16, 2**16), []), 'array of shape (65536, 65536)' + TOO_LARGE),
    (HOLDS_ITSELF, 'value that is nested too deeply or contains itself; use fewer levels'),
    (scipy.sparse.csc_matrix(np.eye(2, dtype='i4')),
     'sparse matrix of dtype int32: only float64, complex128 and bool are supported; use '
     ".astype('float64')"),
    (scipy.sparse.csc_matrix((2**31, 1)),
     'sparse matrix of shape (2147483648, 1)' + TOO_LARGE),
    (pandas.DataFrame([[1, 2]], columns=['a', 'a']),
     'DataFrame with two columns of the same name; use .rename(columns=...)'),
    (pandas.Series([1, None], dtype='Int64'), 'Series of dtype Int64 with missing values; use '
                                              ".to_numpy(float, na_value=float('nan'))"),
])
def test_it_is_named(echo, value, what):
    with pytest.raises(TypeError) as raised:
        echo(value)
    assert str(raised.value) == 'argument 1: cannot convert ' + what


@pytest.mark.parametrize('data, indices, indptr, shape, what', [
    ([1.0], [7], [0, 1], (3, 1), 'whose indices and indptr are not consistent'),
    ([1.0], [0], [0, 2], (3, 1), 'whose indices and indptr are not consistent'),
    ([1.0, 2], [0], [0, 2], (3, 1), 'whose indices and indptr are not consistent'),
    ([1.0], [0, 1], [0, 2], (3, 1), 'whose indices and indptr are not consistent'),
    ([1.0], [0], [0, -1], (3, 1), 'whose indices and indptr are not consistent'),
    ([1.0], [0], [], (3, 1), 'whose indices and indptr are not consistent'),
    ([1.0], [0.5], [0, 1], (3, 1), WRONG_PARTS),
    ([1.0], [0], [0, 1.0], (3, 1), WRONG_PARTS),
    ([1.0], [0], 0, (3, 0), WRONG_PARTS),
    ([[1.0]], [0], [0, 1], (3, 1), WRONG_PARTS),
    (1.0, [0], [0, 1], (3, 1), WRONG_PARTS),
    ([], [], [0], (-1, 0), 'of shape (-1, 0)'),
    ([], [], [], (0, -1), 'of shape (0, -1)'),
    ([], [], [0], (0, 2**31 - 1), 'of shape (0, 2147483647): it is too large'),
    ([], [], [0, 0], (1.0, 1), 'whose shape is not two integers'),
    ([], [], [0, 0], (1, 1, 1), 'whose shape is not two integers'),
    ([], [], [0, 0], None, 'whose shape is not two integers'),
])
def test_sparse_matrices_that_are_not_valid(echo, data, indices, indptr, shape, what):
    parts = [np.asarray(part) for part in (data, indices, indptr)]
    with pytest.raises(TypeError) as raised:
        echo(CompressedColumns(*parts, shape))
    advice = 'several calls, each with a part of it' if 'too large' in what else (
        'scipy.sparse.csc_matrix(...), which checks its arguments')
    assert str(raised.value) == f'argument 1: cannot convert sparse matrix {what}; use {advice}'


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
        f'argument 2: {place}: cannot convert object of type set; use sorted(x) or list(x)')


@pytest.mark.parametrize('value, place', [
    ([2**53 + 1], '[0]'), ([[1, 2], [3, 2**53 + 1]], '[1][1]'), ([0.5, 2**53 + 1], '[1]'),
    ([1j, 2**53 + 1], '[1]'), ([1, 10**400], '[1]'), ([2**64 + 1, -1], '[0]'),
    (range(2**53, 2**53 + 2), '[1]')])
def test_an_integer_in_a_list_that_a_double_cannot_represent(echo, value, place):
    with pytest.raises(TypeError) as raised:
        echo(value)
    assert str(raised.value).startswith(f'argument 1: {place}: cannot convert int ')


def test_the_argument_that_holds_itself_is_named(echo):
    with pytest.raises(TypeError, match='^argument 3: cannot convert value that is nested too'):
        echo(1, 2, HOLDS_ITSELF)


def test_a_refusal_leaves_the_client_usable(echo):
    with pytest.raises(TypeError):
        echo([1, {2}])
    assert echo('next') == 'next'
