# SPDX-License-Identifier: Apache-2.0
"""Whatever a reply holds, it is a value or an error, and the value can be read to its end."""
import numpy as np
import pytest
import replies
import scipy.sparse
from hypothesis import given, settings
from hypothesis import strategies as st
from replies import CELL, DOUBLE, LOGICAL, SPARSE, STRUCT, array, doubles, field, packed

import hcyclient

CONTENT_FIELDS = {CELL: 28, STRUCT: 29, SPARSE: 30, LOGICAL: 26, DOUBLE: 25}
SIZES = st.one_of(st.integers(0, 3),
                  st.sampled_from([7, 2**16, 2**31, 2**32 + 1, 2**63, 2**64 - 1]))
SHAPES = st.one_of(st.lists(SIZES, max_size=4), st.lists(st.just(1), max_size=70))
NUMBERS = st.lists(st.integers(0, 4), max_size=5)
VALUES = st.lists(st.floats(), max_size=5).map(lambda numbers: doubles(*numbers))


@st.composite
def plain_arrays(draw):
    """Some with the content of another class."""
    content = draw(st.one_of(st.binary(max_size=20), NUMBERS.map(packed), VALUES))
    parts = b''.join(field(number, content) for number in draw(st.lists(
        st.integers(1, 2), max_size=2, unique=True)))
    return array(draw(st.integers(0, 20)), draw(SHAPES), draw(st.integers(16, 31)), parts)


@st.composite
def sparse_arrays(draw):
    """Many of which are nearly right."""
    shape = draw(st.one_of(st.tuples(st.integers(0, 4), st.integers(0, 4)), SHAPES))
    starts = draw(st.one_of(NUMBERS.map(sorted), st.lists(SIZES, max_size=5)))
    rows = draw(st.one_of(NUMBERS, st.lists(SIZES, max_size=5)))
    content = field(1, draw(st.integers(0, 3))) + field(2, packed(rows)) + field(3, packed(starts))
    for number in draw(st.lists(st.integers(16, 17), max_size=2, unique=True)):
        content += field(number, field(1, draw(VALUES)) + draw(st.sampled_from(
            [b'', field(2, doubles(1, 2))])))
    return array(SPARSE, shape, 30, content)


@st.composite
def containers(draw, elements):
    shape = draw(st.one_of(st.tuples(st.integers(0, 2), st.integers(0, 2)), SHAPES))
    inner = draw(st.lists(elements, max_size=4))
    if draw(st.booleans()):
        return replies.cell_array(shape, *inner)
    return replies.struct_array(shape, draw(st.lists(st.binary(max_size=2), max_size=3)), *inner)


ARRAYS = st.recursive(st.one_of(plain_arrays(), sparse_arrays()), containers, max_leaves=5)


def read(value):
    if isinstance(value, (list, tuple)):
        for element in value:
            read(element)
    elif isinstance(value, dict):
        read(list(value.values()))
    elif scipy.sparse.issparse(value):
        value.toarray() if max(value.shape) < 100 else value.sum()
    elif isinstance(value, np.ndarray):
        if value.dtype.hasobject:
            read([element for element in value.ravel().tolist()])
        else:
            value.tobytes()
    else:
        assert value is None or isinstance(value, str), repr(value)


@pytest.fixture(scope='module')
def answered():
    """Calls a server with a reply of one's choice."""
    body = [b'']
    with replies.answering(lambda: body[0]) as url, \
            hcyclient.Client(response_size_limit=1 << 17) as client:
        def call(reply, nargout):
            body[0] = reply
            return client.feval(url, nargout=nargout)
        yield call


def require_value_or_error(answered, reply, nargout):
    try:
        read(answered(reply, nargout))
    except hcyclient.Error:
        pass


@settings(max_examples=300)
@given(st.lists(ARRAYS, min_size=1, max_size=2))
def test_arrays_of_any_kind(answered, outputs):
    require_value_or_error(answered, replies.result(*outputs), len(outputs))


@settings(max_examples=300)
@given(ARRAYS.map(replies.result), st.lists(st.tuples(st.floats(0, 1), st.integers(1, 255)),
                                            max_size=3), st.one_of(st.just(1), st.floats(0, 1)))
def test_arrays_with_bytes_changed(answered, reply, changes, kept):
    damaged = bytearray(reply)
    for place, change in changes:
        damaged[int(place * (len(damaged) - 1))] ^= change
    require_value_or_error(answered, bytes(damaged[:int(kept * len(damaged))]), 1)
