# SPDX-License-Identifier: Apache-2.0
"""Whatever a reply holds, a call ends with an error, or with values all of whose elements have
arrived."""
import math

import pytest
import replies
from arrived import BYTES, DTYPES, FIXED, outputs_of
from hypothesis import given, settings
from hypothesis import strategies as st
from replies import CELL, CHAR, LOGICAL, SPARSE, STRUCT, array, doubles, field, packed

import hcyclient

SIZES = st.one_of(st.integers(0, 3),
                  st.sampled_from([7, 2**16, 2**31, 2**32 + 1, 2**63, 2**64 - 1]))
SMALL_SHAPES = st.lists(st.integers(0, 3), min_size=2, max_size=3)
SHAPES = st.one_of(SMALL_SHAPES, st.lists(SIZES, max_size=4),
                   st.lists(st.just(1), max_size=70))
NUMBERS = st.lists(st.integers(0, 4), max_size=5)
VALUES = st.lists(st.floats(), max_size=5).map(lambda numbers: doubles(*numbers))
EXACTLY = st.just
# How many elements come where the dimensions name so many.
NEARLY = lambda count: st.sampled_from([count, count, count, max(count - 1, 0), 0, count + 2]) \
    if count < 100 else st.integers(0, 3)  # noqa: E731


@st.composite
def elements(draw, kind, count):
    """So many of this class, as the field of a message holds them."""
    dtype = DTYPES[kind]
    if dtype in BYTES or dtype in FIXED:
        size = count * int(dtype[1:])
        return draw(st.binary(min_size=size, max_size=size))
    largest = 1 if kind == LOGICAL else 2**16 - 1 if kind <= CHAR and dtype[1] == '2' else 2**64 - 1
    return packed(draw(st.lists(st.integers(0, largest), min_size=count, max_size=count)))


@st.composite
def numbers(draw, shapes=SHAPES, arriving=NEARLY):
    """Numbers, truth values and text."""
    kind, shape = draw(st.integers(0, CHAR)), draw(shapes)
    count = math.prod(shape) if shape else 0
    parts = field(1, draw(elements(kind, draw(arriving(count)))))
    if kind < LOGICAL and draw(st.booleans()):
        parts += field(2, draw(elements(kind, draw(arriving(count)))))
    return array(kind, shape, 16 + kind, parts)


@st.composite
def numbers_of_another_class(draw):
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
def sparse_matrices(draw, arriving=EXACTLY):
    """With rows that increase in each column."""
    height, width = draw(st.tuples(st.integers(0, 4), st.integers(0, 4)))
    columns = draw(st.lists(st.sets(st.integers(0, height - 1)) if height else st.just(set()),
                            min_size=width, max_size=width))
    rows = [row for column in columns for row in sorted(column)]
    starts = [sum(map(len, columns[:i])) for i in range(width + 1)]
    is_logical = draw(st.booleans())
    part = field(1, draw(elements(LOGICAL if is_logical else 9, draw(arriving(len(rows))))))
    if not is_logical and draw(st.booleans()):
        part += field(2, draw(elements(9, draw(arriving(len(rows))))))
    content = field(1, int(is_logical)) + field(2, packed(rows)) + field(3, packed(starts))
    return array(SPARSE, [height, width], 30, content + field(16 + is_logical, part))


@st.composite
def containers(draw, inner, shapes=SHAPES, arriving=NEARLY):
    kind, shape = draw(st.sampled_from([CELL, STRUCT])), draw(shapes)
    names = draw(st.lists(st.binary(max_size=2).filter(lambda name: b'\0' not in name),
                          min_size=kind == STRUCT, max_size=2)) if kind == STRUCT else [b'']
    count = draw(arriving(math.prod(shape) * len(names) if shape else 0))
    found = draw(st.lists(inner, min_size=min(count, 12), max_size=min(count, 12)))
    if kind == CELL:
        return replies.cell_array(shape, *found)
    return replies.struct_array(shape, names, *found)


WHOLE_SHAPES = st.lists(st.integers(0, 2), min_size=2, max_size=3)
WHOLE_ARRAYS = st.recursive(
    st.one_of(numbers(SMALL_SHAPES, EXACTLY), sparse_matrices()),
    lambda inner: containers(inner, WHOLE_SHAPES, EXACTLY), max_leaves=5)
ARRAYS = st.recursive(
    st.one_of(numbers(), numbers_of_another_class(), sparse_arrays(), sparse_matrices(NEARLY),
              WHOLE_ARRAYS),
    containers, max_leaves=5)


@pytest.fixture(scope='module')
def answered():
    """Calls a server with a reply of one's choice, and looks at what is returned."""
    body = [b'']
    with replies.answering(lambda: body[0]) as url, \
            hcyclient.Client(response_size_limit=1 << 17, results='exact') as client:
        def call(reply, nargout):
            body[0] = reply
            values = client.feval(url, nargout=nargout)
            if nargout == 1:
                values = values,
            outputs = outputs_of(reply)
            assert len(values) == nargout == len(outputs)
            for value, output in zip(values, outputs):
                output.require(value)
        yield call


@pytest.fixture(scope='module')
def answered_naturally():
    body = [b'']
    with replies.answering(lambda: body[0]) as url, \
            hcyclient.Client(response_size_limit=1 << 17) as client:
        def call(reply):
            body[0] = reply
            return client.feval(url)
        yield call


def require_arrived_or_error(answered, reply, nargout):
    try:
        answered(reply, nargout)
    except hcyclient.Error:
        pass


@settings(max_examples=200)
@given(st.lists(WHOLE_ARRAYS, min_size=1, max_size=2))
def test_whole_arrays_are_values(answered, outputs):
    answered(replies.result(*outputs), len(outputs))


@settings(max_examples=300)
@given(st.lists(ARRAYS, min_size=1, max_size=2))
def test_arrays_of_any_kind(answered, outputs):
    require_arrived_or_error(answered, replies.result(*outputs), len(outputs))


@settings(max_examples=300)
@given(ARRAYS.map(replies.result), st.floats(0, 1))
def test_arrays_that_are_cut_off(answered, reply, kept):
    require_arrived_or_error(answered, reply[:int(kept * len(reply))], 1)


@settings(max_examples=300)
@given(ARRAYS.map(replies.result), st.lists(st.tuples(st.floats(0, 1), st.integers(1, 255)),
                                            min_size=1, max_size=3))
def test_arrays_with_bytes_changed(answered, reply, changes):
    damaged = bytearray(reply)
    for place, change in changes:
        damaged[int(place * (len(damaged) - 1))] ^= change
    require_arrived_or_error(answered, bytes(damaged), 1)


@settings(max_examples=200)
@given(ARRAYS.map(replies.result))
def test_natural_results_of_arrays_of_any_kind(answered_naturally, reply):
    """A value or an error of ours, and nothing else."""
    try:
        answered_naturally(reply)
    except hcyclient.Error:
        pass
