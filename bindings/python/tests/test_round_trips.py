# SPDX-License-Identifier: Apache-2.0
"""Whatever can be sent comes back as the guide's table says."""
import numpy as np
import scipy.sparse
from hypothesis import given
from hypothesis import strategies as st
from hypothesis.extra import numpy as hnp

import hcyclient
from hcyclient import Cell, complex_dtype

INTEGERS = ['uint8', 'int8', 'uint16', 'int16', 'uint32', 'int32', 'uint64', 'int64']
REALS = [*INTEGERS, 'float32', 'float64', 'bool']
SHAPES = hnp.array_shapes(min_dims=0, max_dims=4, min_side=0, max_side=5)
UTF16 = 'utf-16-le'


def in_two_dimensions(shape):
    return shape if len(shape) > 1 else (*shape, 1, 1)[:2]


def require_equal_arrays(back, sent):
    shape = in_two_dimensions(sent.shape)
    dtype = sent.dtype.newbyteorder('=')
    if sent.size == 0 and (dtype.kind == 'c' or dtype.names):
        dtype = np.dtype(f'f{dtype.itemsize // 2}') if dtype.kind == 'c' else dtype['real']
    if shape == (0, 0) and dtype == np.float64:
        assert back is None
        return
    assert back.dtype == dtype and back.shape == shape
    # Bit by bit: there are several NaN, and two zeros.
    assert back.tobytes('F') == sent.astype(sent.dtype.newbyteorder('=')).tobytes('F') \
        or sent.size == 0


@given(st.data(), st.sampled_from(REALS + ['complex64', 'complex128', '>f8', '>i2', '>c16']))
def test_arrays_of_every_dtype_and_shape(echo, data, dtype):
    sent = data.draw(hnp.arrays(dtype, SHAPES))
    sent = data.draw(st.sampled_from([sent, np.asfortranarray(sent), sent.T, sent[::-1]
                                      if sent.ndim else sent]))
    require_equal_arrays(echo(sent), sent)


@given(st.data(), st.sampled_from(INTEGERS))
def test_complex_integers_of_every_shape(echo, data, part):
    sent = np.zeros(data.draw(SHAPES), complex_dtype(part))
    for name in sent.dtype.names:
        sent[name] = data.draw(hnp.arrays(part, sent.shape))
    if sent.size and not sent['imag'].any():
        sent['imag'].flat[0] = 1  # parts that are all zero are parts nevertheless: see below
    require_equal_arrays(echo(sent), sent)


def test_imaginary_parts_of_zero_stay(echo):
    assert echo(np.ones((2, 2), complex)).dtype == np.complex128


@given(st.binary(max_size=40).filter(lambda raw: len(raw) % 2 == 0))
def test_any_code_units(echo, raw):
    sent = raw.decode(UTF16, 'surrogatepass')
    assert echo(sent) == sent


@given(hnp.arrays('uint16', hnp.array_shapes(min_dims=2, max_dims=3, min_side=0, max_side=4)))
def test_characters_of_every_shape(echo, units):
    sent = units.astype(np.uint32).view('U1')
    back = echo(sent)
    if units.ndim == 2 and (len(units) == 1 or units.shape == (0, 0)):
        assert back.encode(UTF16, 'surrogatepass') == units.astype('<u2').tobytes()
    else:
        assert back.dtype == sent.dtype and back.shape == sent.shape
        assert back.astype('U1', order='C').tobytes() == sent.tobytes()


@st.composite
def sparse_matrices(draw):
    dense = draw(hnp.arrays(draw(st.sampled_from(['float64', 'complex128', 'bool'])),
                            hnp.array_shapes(min_dims=2, max_dims=2, min_side=0, max_side=6)))
    kept = draw(hnp.arrays(bool, dense.shape))
    rows, columns = np.nonzero(kept)  # zeros that are stored are among them
    return scipy.sparse.coo_matrix((dense[kept], (rows, columns)), dense.shape)


@given(sparse_matrices(), st.sampled_from(['csc', 'csr', 'coo']))
def test_sparse_matrices(echo, matrix, form):
    back = echo(matrix.asformat(form))
    sent = matrix.tocsc()
    assert type(back) is scipy.sparse.csc_matrix and back.shape == sent.shape
    real = sent.dtype.kind == 'c' and sent.nnz == 0
    assert back.dtype == (float if real else sent.dtype)
    assert back.data.tobytes() == (b'' if real else sent.data.tobytes())
    np.testing.assert_array_equal(back.indices, sent.indices)
    np.testing.assert_array_equal(back.indptr, sent.indptr)


NAMES = st.text(st.characters(blacklist_categories=['Cs'], blacklist_characters='\0'), max_size=5)
LEAVES = st.one_of(
    st.none(), st.booleans(), st.floats(), st.integers(-2**53, 2**53),
    st.complex_numbers(allow_nan=False), st.text(max_size=5),
    hnp.arrays(st.sampled_from(REALS), hnp.array_shapes(max_dims=3, min_side=0, max_side=3)))


@st.composite
def object_arrays(draw, elements):
    array = np.empty(draw(hnp.array_shapes(min_dims=2, max_dims=3, min_side=0, max_side=2)), object)
    for place in np.ndindex(array.shape):
        array[place] = draw(elements)
    return array


@st.composite
def structured_arrays(draw, elements):
    names = draw(st.lists(NAMES.filter(bool), min_size=1, max_size=2, unique=True))
    array = np.empty(draw(hnp.array_shapes(min_dims=2, max_dims=3, min_side=0, max_side=2)),
                     [(name, object) for name in names])
    for place in np.ndindex(array.shape):
        for name in names:
            array[name][place] = draw(elements)
    return array


@st.composite
def struct_lists(draw, elements):
    names = draw(st.lists(NAMES, min_size=1, max_size=2, unique=True))
    return [{name: draw(elements) for name in names}
            for _ in range(draw(st.integers(2, 3)))]


# One of numbers alone would be an array.
CELLS = {list: lambda values: ['', *values], tuple: lambda values: (*values, '')}
VALUES = st.recursive(LEAVES, lambda inner: st.one_of(
    st.lists(inner, max_size=3).map(CELLS[list]), st.lists(inner, max_size=3).map(Cell),
    st.lists(inner, max_size=2).map(CELLS[tuple]), st.dictionaries(NAMES, inner, max_size=3),
    object_arrays(inner), structured_arrays(inner), struct_lists(inner)), max_leaves=6)


def require_equal(back, sent):
    if sent is None or isinstance(sent, str):
        assert type(back) is type(sent) and back == sent
    elif isinstance(sent, (bool, int, float, complex)):
        kind = float if type(sent) is int else type(sent)
        require_equal_arrays(back, np.array(sent, kind))
    elif isinstance(sent, dict):
        require_equal_structs(back, sent)
    elif isinstance(sent, (list, tuple)):
        require_equal_lists(back, sent)
    elif sent.dtype == object:
        require_equal_cells(back, sent)
    elif sent.dtype.names is not None:
        require_equal_struct_arrays(back, sent)
    else:
        require_equal_arrays(back, sent)


def require_equal_structs(back, sent):
    assert type(back) is dict and list(back) == list(sent)
    for name in sent:
        require_equal(back[name], sent[name])


def same_keys(sent):
    return len(sent) > 0 and all(
        isinstance(element, dict) and element.keys() == sent[0].keys() for element in sent)


def require_equal_lists(back, sent):
    if type(sent) is Cell or not same_keys(sent):
        assert type(back) is Cell and len(back) == len(sent)
        for element, other in zip(back, sent):
            require_equal(element, other)
    elif len(sent) == 1:
        require_equal_structs(back, sent[0])
    elif not sent[0]:
        assert back.shape == (1, len(sent)) and back.dtype.names == ()
    else:
        assert type(back) is list and len(back) == len(sent)
        for element, other in zip(back, sent):
            require_equal_structs(element, {name: other[name] for name in sent[0]})


def is_row(array):
    return array.ndim == 2 and (array.shape[0] == 1 or array.shape == (0, 0))


def require_equal_cells(back, sent):
    if is_row(sent):
        require_equal_lists(back, Cell(sent.ravel()))
        return
    assert back.dtype == object and back.shape == sent.shape
    for place in np.ndindex(sent.shape):
        require_equal(back[place], sent[place])


def require_equal_struct_arrays(back, sent):
    names = sent.dtype.names
    if is_row(sent) and sent.size:
        back = np.array([tuple(element.values()) for element in (
            [back] if sent.size == 1 else back)], [(name, object) for name in back[0]]
            if sent.size > 1 else [(name, object) for name in back])[None]
    assert back.shape == sent.shape and back.dtype.names == names
    for place in np.ndindex(sent.shape):
        for name in names:
            require_equal(back[place][name], sent[place][name])


@given(VALUES)
def test_containers_of_all_of_them(echo, sent):
    require_equal(echo(sent), sent)


@given(VALUES)
def test_what_came_back_is_sent_unchanged(echo, sent):
    """The second time, nothing is lost any more."""
    once = echo(sent)
    twice = echo(once)
    assert repr(twice) == repr(once)


@given(st.lists(VALUES, max_size=4))
def test_several_arguments_and_outputs(server, session_client, sent):
    back = session_client.feval(server + '/echo', *sent, nargout=len(sent))
    if len(sent) == 1:
        back = (back,)
    for element, other in zip(back or (), sent):
        require_equal(element, other)
    assert (back is None) == (not sent) and isinstance(session_client, hcyclient.Client)


def natural(sent):
    """What an echo of it gives, unless results are exact."""
    if isinstance(sent, dict):
        return {name: natural(value) for name, value in sent.items()}
    if isinstance(sent, (list, tuple)):
        if type(sent) is Cell or not same_keys(sent):
            return [natural(value) for value in sent]
        if not sent[0] and len(sent) > 1:
            return np.empty((1, len(sent)), [])
        elements = [natural({name: element[name] for name in sent[0]}) for element in sent]
        return elements if len(sent) > 1 else elements[0]
    if isinstance(sent, np.ndarray) and sent.dtype.names:
        elements = [dict(zip(sent.dtype.names, map(natural, one))) for one in sent.ravel('F')]
        return elements if sent.size != 1 or sent.ndim > 2 else elements[0]
    if isinstance(sent, np.ndarray) and sent.dtype == object:
        return natural_cells(sent)
    return natural_leaf(sent)


def natural_cells(sent):
    values = [natural(value) for value in sent.ravel('F')]
    if sent.ndim == 2 and (1 in sent.shape or sent.shape == (0, 0)):
        return values
    array = np.empty(sent.size, object)
    for i, value in enumerate(values):
        array[i] = value
    return array.reshape(sent.shape, order='F')


def natural_leaf(sent):
    if sent is None:
        return np.empty((0, 0))
    if isinstance(sent, str):
        return sent
    array = np.asarray(float(sent) if type(sent) is int else sent)
    if array.ndim < 2 or array.ndim == 2 and 1 in array.shape:
        return array.reshape(-1) if array.size != 1 else array.reshape(())[()]
    return array


def require_same(back, expected):
    if isinstance(expected, np.ndarray) and expected.dtype == object:
        assert back.dtype == object and back.shape == expected.shape
        require_same(list(back.flat), list(expected.flat))
    elif isinstance(expected, dict):
        assert type(back) is dict and list(back) == list(expected)
        require_same(list(back.values()), list(expected.values()))
    elif isinstance(expected, list):
        assert isinstance(back, list) and len(back) == len(expected)
        for one, other in zip(back, expected):
            require_same(one, other)
    elif isinstance(expected, str):
        assert type(back) is str and back == expected
    else:
        assert type(back) is type(expected) and back.dtype == expected.dtype
        assert back.shape == expected.shape and back.tobytes('F') == expected.tobytes('F')


@given(VALUES)
def test_natural_results(server, session_client, sent):
    require_same(session_client.feval(server + '/echo', sent, results='natural'), natural(sent))
