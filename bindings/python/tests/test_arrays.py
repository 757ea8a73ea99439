# SPDX-License-Identifier: Apache-2.0
"""What goes out and comes back, value by value."""
import gc
import subprocess
import sys
import tracemalloc
import weakref

import numpy as np
import pytest
from hcyclient import Cell, complex_dtype

NUMERIC = ['uint8', 'int8', 'uint16', 'int16', 'uint32', 'int32', 'uint64', 'int64', 'float32',
           'float64', 'bool']


def base_of(array):
    while isinstance(array.base, np.ndarray):
        array = array.base
    return array.base


@pytest.mark.parametrize('name', [*NUMERIC, 'longlong', 'ulonglong'])
def test_each_dtype_comes_back_as_it_was(echo, name):
    dtype = np.dtype(name)
    ends = [False, True] if name == 'bool' else [np.finfo(dtype).min, np.finfo(dtype).max] \
        if dtype.kind == 'f' else [np.iinfo(dtype).min, np.iinfo(dtype).max]
    sent = np.array([[*ends, 1], [1, 0, *ends[:1]]], dtype)
    back = echo(sent)
    assert back.dtype == dtype
    np.testing.assert_array_equal(back, sent)


@pytest.mark.parametrize('name', NUMERIC)
@pytest.mark.parametrize('shape', [(1, 1), (5, 1), (3, 4), (2, 3, 4)])
def test_an_output_is_a_view_by_columns(echo, name, shape):
    back = echo(np.ones(shape, name))
    assert back.flags.f_contiguous and back.flags.writeable and not back.flags.owndata
    assert type(base_of(back)).__name__ == 'Storage'


def test_a_view_keeps_the_array_alive_and_the_last_one_destroys_it(echo):
    back = echo(np.arange(100_000.0))
    owner = base_of(back).owner
    alive = weakref.ref(owner)
    part = back[10:20, 0]
    del back, owner
    gc.collect()
    assert alive() is not None
    np.testing.assert_array_equal(part, np.arange(10.0, 20.0))
    del part
    assert alive() is None


def test_outputs_of_one_call_live_on_their_own(server, client):
    first, second = client.feval(server + '/echo', np.arange(5.0), np.arange(7.0), nargout=2)
    alive = weakref.ref(base_of(first).owner)
    del first
    assert alive() is None
    np.testing.assert_array_equal(second[:, 0], np.arange(7.0))


def test_a_view_outlives_its_client(server):
    import hcyclient
    with hcyclient.Client() as client:
        back = client.feval(server + '/echo', np.arange(3.0))
    del client
    np.testing.assert_array_equal(back, [0, 1, 2])


def test_a_view_outlives_the_library(server):
    subprocess.run([sys.executable, '-c', '''
import sys, hcyclient, numpy as np
from hcyclient import _runtime
with hcyclient.Client() as client:
    view, [cell, text] = client.feval(sys.argv[1] + '/echo', np.arange(1e5), [np.arange(3.0), 'x'],
                                      nargout=2)
assert _runtime._runtime is None
assert view.sum() == sum(range(100_000)) and cell.sum() == 3
view[:] = 1
del view, cell
''', server], check=True)


ONES = np.ones((500, 400))


@pytest.mark.parametrize('array', [
    np.asfortranarray(ONES), ONES, np.ones((1000, 400))[::2], ONES.astype('>f8'), ONES * 1j,
    ONES.astype('i2'), ONES > 0,
], ids=['columns', 'rows', 'strides', 'byte_order', 'complex', 'int16', 'bool'])
def test_arrays_are_written_once(array):
    from hcyclient._inputs import handles_of
    tracemalloc.start()  # NumPy tells it of its arrays
    try:
        handles = handles_of([array])
        _, most = tracemalloc.get_traced_memory()
    finally:
        tracemalloc.stop()
    assert len(handles) == 1 and most < 20_000


def test_an_output_can_be_written_and_sent_again(echo):
    back = echo(np.zeros((2, 2)))
    back[0, 1] = 3
    np.testing.assert_array_equal(echo(back), [[0, 3], [0, 0]])


@pytest.mark.parametrize('array', [
    np.arange(12.0).reshape(3, 4),
    np.asfortranarray(np.arange(12.0).reshape(3, 4)),
    np.arange(48.0).reshape(6, 8)[::2, ::-2],
    np.arange(12.0).reshape(3, 4).T,
    np.arange(24).reshape(2, 3, 4).astype('>i4'),
    np.arange(20_000.0).reshape(100, 200),
    np.broadcast_to(np.float32(2), (3, 5)),
], ids=['rows', 'columns', 'strides', 'transposed', 'byte_order', 'large', 'broadcast'])
def test_any_layout_is_sent_in_columns(echo, array):
    back = echo(array)
    assert back.dtype == array.dtype.newbyteorder('=')
    np.testing.assert_array_equal(back, array)


def test_an_input_stays_as_it_was(echo):
    sent = np.asfortranarray(np.arange(6.0).reshape(2, 3))
    sent.flags.writeable = False
    echo(sent)[:] = 0
    np.testing.assert_array_equal(sent, np.arange(6.0).reshape(2, 3))


@pytest.mark.parametrize('sent', [5.0, 5, np.float64(5), np.array(5.0), np.int32(5), np.uint8(5),
                                  np.array(5, 'i8')])
def test_a_number_is_1_by_1(echo, sent):
    back = echo(sent)
    dtype = float if isinstance(sent, (int, float)) else sent.dtype
    assert back.shape == (1, 1) and back.dtype == dtype and back.item() == 5


@pytest.mark.parametrize('sent', [True, False, np.True_, np.array(False)])
def test_a_truth_value_is_1_by_1(echo, sent):
    back = echo(sent)
    assert back.shape == (1, 1) and back.dtype == bool and back.item() == bool(sent)


def test_a_vector_is_a_column(echo):
    assert echo(np.arange(3.0)).shape == (3, 1)


@pytest.mark.parametrize('sent', [1 + 2j, np.complex64(1 - 1j), np.array([[1j, 2], [3, 4 - 1j]]),
                                  np.arange(4).reshape(2, 2).astype('F') * 1j])
def test_complex_numbers(echo, sent):
    back = echo(sent)
    assert back.dtype == np.asarray(sent).dtype and back.flags.f_contiguous
    np.testing.assert_array_equal(back, np.asarray(sent).reshape(back.shape))


@pytest.mark.parametrize('name', NUMERIC[:8])
def test_complex_integers(echo, name):
    sent = np.zeros((2, 2), complex_dtype(name))
    sent['real'], sent['imag'] = [[1, 2], [3, 4]], [[100, 0], [0, 0]]
    back = echo(sent)
    assert back.dtype == sent.dtype
    np.testing.assert_array_equal(back, sent)


@pytest.mark.parametrize('real, imaginary', [('f8', 'f8'), ('i2', 'i4'), ('?', '?')])
def test_other_fields_of_these_names_are_a_struct(echo, real, imaginary):
    back = echo(np.ones((2, 1), [('real', real), ('imag', imaginary)]))
    assert back.dtype.names == ('real', 'imag')
    assert back[1, 0]['imag'].dtype == imaginary and back[1, 0]['imag'].item() == 1


@pytest.mark.parametrize('name', ['float64', 'bool', 'U1'])
def test_only_integers_have_such_a_dtype(name):
    with pytest.raises(TypeError, match='is not an integer dtype'):
        complex_dtype(name)


@pytest.mark.parametrize('shape', [(0, 0), (0, 3), (3, 0), (2, 0, 4)])
@pytest.mark.parametrize('name', NUMERIC)
def test_empty_arrays_keep_class_and_shape(echo, name, shape):
    back = echo(np.empty(shape, name))
    if name == 'float64' and shape == (0, 0):
        assert back is None
    else:
        assert back.dtype == name and back.shape == shape


def test_an_empty_complex_array_is_real(echo):
    assert echo(np.empty((0, 2), complex)).dtype == np.float64


def test_nothing_is_0_by_0(echo):
    assert echo(None) is None


@pytest.mark.parametrize('sent', [
    '', 'a', 'Zürich', 'naïve \U0001F600', 'a\0b\0', '\ud83d', 'x' * 100_000])
def test_a_text_comes_back(echo, sent):
    back = echo(sent)
    assert type(back) is str and back == sent


def test_text_rows_are_padded_with_nul(echo):
    back = echo(np.array(['ab', '', 'c\U0001F600']))
    assert back.dtype == np.dtype('U1') and back.shape == (3, 3)
    assert back.view(np.uint32).tolist() == [[97, 98, 0], [0, 0, 0], [99, 0xD83D, 0xDE00]]


def test_text_rows_hold_any_code_units(echo):
    assert echo(np.array(['a\ud800', 'b'])).view(np.uint32).tolist() == [[97, 0xD800], [98, 0]]


def test_characters_keep_their_shape(echo):
    sent = np.array([list('abc'), list('d\0ü')])
    back = echo(sent)
    assert back.shape == (2, 3)
    np.testing.assert_array_equal(back, sent)
    assert echo(np.empty((0, 3), 'U1')).shape == (0, 3)
    assert echo(np.empty((2, 2, 2), 'U1')).shape == (2, 2, 2)
    assert echo(np.array('text')) == 'text'


def test_a_list_of_other_things_is_a_cell_of_one_row(echo):
    back = echo([1.5, 'text', None, [True], {'a': 1}])
    assert type(back) is Cell and len(back) == 5
    assert back[0].item() == 1.5 and back[1] == 'text' and back[2] is None
    assert back[3].item() is True and back[4]['a'].item() == 1
    assert echo(Cell()) == [] and echo(Cell([1, 2]))[1].item() == 2


def test_an_array_of_objects_is_a_cell_of_its_shape(echo):
    sent = np.empty((2, 3), object)
    for place in np.ndindex(2, 3):
        sent[place] = f'{place}'
    back = echo(sent)
    assert back.dtype == object
    np.testing.assert_array_equal(back, sent)
    assert echo(np.empty((0, 2), object)).shape == (0, 2)
    assert echo(np.array([None, [1]], object))[1, 0][0].item() == 1


def test_a_dictionary_is_a_struct(echo):
    back = echo({'name': 'box', 'größe': np.arange(3.0), 'none': None})
    assert list(back) == ['name', 'größe', 'none'] and back['name'] == 'box'
    np.testing.assert_array_equal(back['größe'][:, 0], np.arange(3.0))
    assert echo({}) == {}


def test_dictionaries_with_the_same_keys_are_a_struct_array(echo):
    back = echo([{'a': 1, 'b': 'x'}, {'b': 'y', 'a': 2}])
    assert type(back) is list
    assert [(s['a'].item(), s['b']) for s in back] == [(1, 'x'), (2, 'y')]
    assert type(echo([{'a': 1}, {'b': 2}])) is Cell
    assert type(echo([{'a': 1}, 2])) is Cell
    assert type(echo(Cell([{'a': 1}, {'a': 2}]))) is Cell


def test_a_structured_array_is_a_struct_array_of_its_shape(echo):
    sent = np.zeros((3, 2), [('x', 'f8'), ('n', 'i2')])
    sent['x'], sent['n'] = np.arange(6).reshape(3, 2) / 2, np.arange(6).reshape(3, 2)
    back = echo(sent)
    assert back.dtype.names == ('x', 'n') and back[2, 1]['n'].dtype == np.int16
    for came in back, echo(back):
        assert came.shape == (3, 2)
        for place in np.ndindex(3, 2):
            assert tuple(field.item() for field in came[place]) == sent[place].item()
    assert echo(sent[0, 1])['x'].item() == 0.5
    assert echo(np.empty((0, 2), sent.dtype)).dtype.names == ('x', 'n')
    assert echo(np.empty((2, 3), [])).shape == (2, 3)
    assert echo([{}, {}]).shape == (1, 2) and echo([{}, {}]).dtype.names == ()


@pytest.mark.filterwarnings('ignore:the matrix subclass')
def test_classes_of_numpy_that_have_ways_of_their_own(echo):
    np.testing.assert_array_equal(echo(np.matrix([[1, 2], [3, 4]])), [[1, 2], [3, 4]])
    assert echo(np.matrix([['a', None], [1, 'b']], object))[1, 1] == 'b'
    characters = np.char.array([['a', 'b'], ['c', 'd']])
    np.testing.assert_array_equal(echo(characters), np.asarray(characters))
    assert echo(np.char.array('a ')) == 'a '


def test_subclasses_of_the_types_in_the_table(echo):
    import collections
    import enum
    import types
    assert echo(enum.IntEnum('E', 'a b').b).item() == 2
    assert echo(collections.OrderedDict(a='b')) == {'a': 'b'}
    assert echo(types.MappingProxyType({'a': 'b'})) == {'a': 'b'}
    assert echo(np.str_('text')) == 'text'
    assert echo(np.rec.array([(1, 2)], names='a,b'))['b'].item() == 2
