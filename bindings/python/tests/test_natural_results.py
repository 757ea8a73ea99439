# SPDX-License-Identifier: Apache-2.0
"""Results as Python's users expect them, which is what a client gives unless told otherwise."""
import json

import numpy as np
import pytest
import replies
from replies import CHAR, DOUBLE, STRUCT, array, cell_array, double_array, struct_array

import hcyclient
from hcyclient import Cell, complex_dtype, records


@pytest.fixture(scope='module')
def natural():
    with hcyclient.Client() as client:
        yield client


@pytest.fixture(scope='module')
def echo(server, natural):
    return natural.function(server + '/echo')


def answer(client, *outputs, **options):
    with replies.answering(replies.result(*outputs)) as url:
        return client.feval(url, nargout=len(outputs), **options)


@pytest.mark.parametrize('sent', [
    2.5, -0.0, float('inf'), np.float32(2.5), np.uint8(200), np.int8(-3), np.uint16(65535),
    np.int16(-2**15), np.uint32(2**32 - 1), np.int32(-2**31), np.uint64(2**64 - 1),
    np.int64(-2**63), True, np.False_,
    1 + 2j, np.complex64(1j)])
def test_a_number_is_a_scalar_of_numpy(echo, sent):
    back = echo(sent)
    assert type(back) is type(np.asarray(sent)[()]) and back == sent


def test_a_number_is_used_like_one_of_python(echo):
    back = echo(2.125)
    assert f'{back:.2f}' == '2.12' and round(back, 1) == 2.1
    assert json.dumps({'a': back}) == '{"a": 2.125}'
    assert echo(True) and not echo(False)


def test_a_complex_integer(echo):
    sent = np.array([(3, -4)], complex_dtype('int16'))
    back = echo(sent)
    assert back['real'] == 3 and back['imag'] == -4 and back.dtype == sent.dtype
    assert echo(back) == back


@pytest.mark.parametrize('shape', [(3, 1), (1, 3), (0, 1), (1, 0)])
@pytest.mark.parametrize('name', ['float64', 'bool', 'int16', 'complex128'])
def test_a_vector_has_one_dimension(echo, name, shape):
    sent = np.ones(shape, name)
    back = echo(sent)
    np.testing.assert_array_equal(back, sent.ravel())
    assert sent.size == 0 or back.dtype == name


@pytest.mark.parametrize('shape', [(2, 3), (0, 0), (0, 3), (2, 0), (1, 1, 3), (1, 1, 1), (2, 3, 4)])
def test_any_other_array_keeps_its_shape(echo, shape):
    back = echo(np.ones(shape))
    assert back.shape == shape and back.dtype == float
    if not back.size:
        assert echo(None).shape == (0, 0)


def test_a_vector_is_a_view(echo):
    assert not echo(np.ones(5)).flags.owndata


def test_code_for_numpy_works_unchanged(server, natural):
    solve = natural.function(server + '/linalg/solve')
    a, b = np.array([[2.0, 1], [1, 3]]), np.array([3.0, 5])
    x = solve(a, b)
    assert x.shape == b.shape and np.allclose(a @ x, b)
    assert np.allclose(solve(a, np.eye(2)) @ a, np.eye(2))


@pytest.mark.parametrize('sent', [['ab', 'c', ''], ['a', 'b'], ['', ''], ['a\U0001F600', 'b']])
def test_rows_of_text_are_strings(echo, sent):
    back = echo(np.array(sent))
    assert back.tolist() == sent and back.ndim == 1
    assert echo(back).tolist() == sent


def test_rows_that_blanks_fill_are_strings(natural):
    units = replies.field(1, b'acb   ')  # by columns
    assert answer(natural, array(CHAR, [2, 3], 27, units)).tolist() == ['ab', 'c']
    assert answer(natural, array(CHAR, [1, 6], 27, units)) == 'acb   '


def test_rows_without_characters_take_no_memory(natural):
    back = answer(natural, array(CHAR, [1 << 30, 0]))
    assert back.shape == (1 << 30,) and back[5] == '' and back.strides == (0,)
    with pytest.raises(hcyclient.TransportError, match='the reply holds an array of shape'):
        answer(natural, array(CHAR, [1 << 63, 0]))


def test_texts(echo):
    assert echo('text') == 'text' and echo('') == ''
    assert echo(np.empty((0, 3), 'U1')).tolist() == []
    assert echo(np.full((2, 2, 2), 'x')).shape == (2, 2, 2)


@pytest.mark.parametrize('shape', [(3,), (3, 1), (1, 3)])
def test_cells_in_a_line_are_a_list(echo, shape):
    cells = np.empty(3, object)
    cells[:] = ['a', 1.5, {'b': True}]
    back = echo(cells.reshape(shape))
    assert type(back) is Cell and back == ['a', 1.5, {'b': True}]


def test_cells_of_another_shape_keep_it(echo):
    back = echo(np.full((2, 3), 'x', object))
    assert back.dtype == object and back.shape == (2, 3) and back[1, 2] == 'x'


@pytest.mark.parametrize('shape', [(3,), (1, 3), (3, 1), (0,)])
def test_structs_are_dictionaries(echo, shape):
    sent = np.zeros(shape, [('n', 'f8'), ('t', object)])
    sent['t'] = 'x'
    assert echo(sent) == [{'n': 0, 't': 'x'}] * sent.size


def test_one_struct_is_a_dictionary(echo):
    assert echo({'n': 1, 't': 'x'}) == {'n': 1, 't': 'x'}
    assert echo([{'n': 1}]) == {'n': 1}


def test_a_matrix_of_structs_is_read_by_columns(natural):
    message = struct_array([2, 2], [b'a'], *[double_array([1, 1], i) for i in range(4)])
    assert answer(natural, message) == [{'a': i} for i in range(4)]


def test_structs_without_fields_take_no_memory(natural):
    back = answer(natural, array(STRUCT, [1 << 15, 1 << 15]))
    assert back.shape == (1 << 15, 1 << 15) and back.dtype.names == ()


@pytest.mark.parametrize('columns', [1, 2])
def test_records_are_a_list_for_any_number_of_structs(server, natural, columns):
    back = natural.feval(server + '/stats/describe', np.ones((3, columns)))
    assert [one['mean'] for one in records(back)] == [1] * columns


def test_records_of_structured_arrays():
    table = np.array([[(1, 'x'), (2, 'y')], [(3, 'z'), (4, '')]], [('n', object), ('t', object)])
    assert [one['n'] for one in records(table)] == [1, 3, 2, 4]
    assert records(table[0, 0]) == [{'n': 1, 't': 'x'}]
    assert records([]) == []


@pytest.mark.parametrize('other', [3, [1], np.ones(2), 'text', None])
def test_records_of_nothing_else(other):
    with pytest.raises(TypeError, match=r'records\(\) takes a dict'):
        records(other)


def test_the_place_of_what_is_missing_is_named(natural):
    short = double_array([2, 3], 1)
    one = double_array([1, 1], 1)
    for message, place in [(cell_array([2, 1], one, short), '[1]'),
                           (struct_array([2, 1], [b'a'], one, short), "[1]['a']"),
                           (array(CHAR, [2, 3]), ''), (array(DOUBLE, [1, 1]), '')]:
        with pytest.raises(hcyclient.IncompleteReply) as raised:
            answer(natural, message)
        assert raised.value.text.startswith(f'output 0{", " if place else ""}{place}: the dim')


def test_a_call_may_ask_for_the_other_kind(server, natural):
    function = natural.function(server + '/echo')
    assert function(1, results='exact').shape == (1, 1)
    assert natural.feval(server + '/echo', None, results='exact') is None
    with hcyclient.Client(results='exact') as exact:
        assert exact.feval(server + '/echo', 1).shape == (1, 1)
        assert exact.feval(server + '/echo', 1, results='natural') == 1


@pytest.mark.parametrize('results', ['Exact', None, 1, []])
def test_there_are_two_kinds(server, results):
    with pytest.raises(ValueError, match="results must be 'natural' or 'exact', not "):
        hcyclient.Client(results=results)


COMPLEX_ONE = array(DOUBLE, [1, 1], 25, replies.field(1, replies.doubles(1)) + replies.field(
    2, replies.doubles(2)))
ONE = double_array([1, 1], 1)


@pytest.mark.parametrize('other, value', [
    (COMPLEX_ONE, 1 + 2j), (double_array([1, 2], 1, 2), np.array([1.0, 2.0])),
    (double_array([1, 1, 1], 1), np.ones((1, 1, 1))), (double_array([0, 0]), np.empty((0, 0))),
    (array(CHAR, [1, 1], 27, replies.field(1, b'x')), 'x'),
    (replies.sparse_array([1, 1], [0], [0, 1], [3]), None),
], ids=range(6))
def test_one_element_that_is_not_a_number_among_many_that_are(natural, other, value):
    for reply in (cell_array([1, 1500], *[ONE] * 1400, other, *[ONE] * 99),
                  struct_array([1, 750], [b'a', b'b'], *[ONE] * 1400, other, *[ONE] * 99)):
        found = answer(natural, reply)
        if reply[1] == STRUCT:
            found = [element for fields in found for element in fields.values()]
        assert len(found) == 1500 and all(type(number) is np.float64 and number == 1
                                          for number in found[:1400] + found[1401:])
        if value is None:
            assert found[1400].toarray().tolist() == [[3.0]]
        else:
            assert np.shape(found[1400]) == np.shape(value) and np.all(found[1400] == value)


@pytest.mark.parametrize('dtype', ['u1', 'i1', 'u2', 'i2', 'u4', 'i4', 'u8', 'i8', 'f4', 'f8'])
def test_many_numbers_in_a_container(echo, dtype):
    limits = np.finfo(dtype) if dtype[0] == 'f' else np.iinfo(dtype)
    sent = Cell([np.dtype(dtype).type(limit) for limit in (limits.min, limits.max)] * 1100)
    found = echo(sent)
    assert found == sent and {type(number) for number in found} == {np.dtype(dtype).type}


def test_one_number_of_another_class_among_many(echo):
    found = echo(Cell([1.0] * 1100 + [np.int32(7)] + [1.0]))
    assert found == [1.0] * 1100 + [7, 1.0] and type(found[1100]) is np.int32


def test_many_booleans_and_strings_in_a_container(echo):
    flags = Cell([True, False] * 1100)
    found = echo(flags)
    assert found == flags and {type(flag) for flag in found} == {np.bool_}
    strings = Cell(['a', '', 'naïve \U0001F600', 'a\0b'] * 600)
    assert echo(strings) == strings


STRING = array(CHAR, [1, 3], 27, replies.field(1, b'abc'))


@pytest.mark.parametrize('other, value', [
    (array(CHAR, [3, 1], 27, replies.field(1, b'abc')), np.array(['a', 'b', 'c'])),
    (array(CHAR, [2, 2], 27, replies.field(1, b'acbd')), np.array(['ab', 'cd'])),
    (array(CHAR, [1, 1, 2], 27, replies.field(1, b'ab')), np.array([[['a', 'b']]])),
    (array(CHAR, [0, 3]), np.array([], 'U1')), (ONE, 1.0),
], ids=range(5))
def test_one_element_that_is_not_a_string_among_many_that_are(natural, other, value):
    found = answer(natural, cell_array([1, 1500], *[STRING] * 1400, other, *[STRING] * 99))
    assert found[:1400] + found[1401:] == ['abc'] * 1499
    assert np.shape(found[1400]) == np.shape(value) and np.all(found[1400] == value)
