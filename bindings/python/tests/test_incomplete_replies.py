# SPDX-License-Identifier: Apache-2.0
"""An incomplete output is an error, and nothing is invented in place of what is missing."""
import gc
import tracemalloc

import numpy as np
import pytest
import replies
from replies import CELL, CHAR, DOUBLE, LOGICAL, OBJECT, SPARSE, STRUCT, UINT8, array, cell_array
from replies import double_array, doubles, field, packed, sparse_array, struct_array

import hcyclient
from hcyclient import IncompleteReply

CUT = '; the reply may have been truncated at response_size_limit'
SIX = 'the dimensions of the array announce 6 elements, which did not all arrive'


def answer(client, *outputs):
    with replies.answering(replies.result(*outputs)) as url:
        return client.feval(url, nargout=len(outputs))


def complaint(client, *outputs):
    """What the error says."""
    with pytest.raises(IncompleteReply) as raised:
        answer(client, *outputs)
    assert isinstance(raised.value, hcyclient.TransportError)
    assert raised.value.text.endswith(CUT) and raised.value.url.startswith('http://127.0.0.1:')
    assert str(raised.value) == f'{raised.value.url}: {raised.value.text}'
    return raised.value.text[:-len(CUT)]


def varints(count):
    return packed([1] * count)


CLASSES = {'uint8': bytes, 'int8': bytes, 'uint16': varints, 'int16': varints,
           'uint32': lambda count: bytes(4 * count), 'int32': lambda count: bytes(4 * count),
           'uint64': varints, 'int64': varints, 'single': lambda count: bytes(4 * count),
           'double': lambda count: bytes(8 * count), 'logical': varints, 'char': varints}
NAMES = list(CLASSES)


def elements(name, *counts, shape=(2, 3)):
    """An array of this class with so many real parts, and so many imaginary ones."""
    parts = b''.join(field(i, CLASSES[name](count)) for i, count in enumerate(counts, 1) if count)
    return array(NAMES.index(name), shape, 16 + NAMES.index(name), parts)


@pytest.mark.parametrize('name', NAMES)
def test_missing_elements(client, name):
    assert answer(client, elements(name, 6)).shape == (2, 3)
    assert answer(client, elements(name, 7)).shape == (2, 3)
    for count in (5, 1, 0):
        assert complaint(client, elements(name, count)) == f'output 0: {SIX}'
    assert complaint(client, array(NAMES.index(name), [2, 3])) == f'output 0: {SIX}'


@pytest.mark.parametrize('name', NAMES[:10])
def test_missing_imaginary_parts(client, name):
    assert answer(client, elements(name, 6, 6)).shape == (2, 3)
    for counts in ((6, 5), (6, 1), (5, 6), (0, 6)):
        assert complaint(client, elements(name, *counts)) == f'output 0: {SIX}'


def test_missing_code_units(client):
    assert answer(client, elements('char', 6, shape=[1, 6])) == '\1' * 6
    assert complaint(client, elements('char', 5, shape=[1, 6])) == f'output 0: {SIX}'


@pytest.mark.parametrize('kind', [UINT8, DOUBLE, LOGICAL, CHAR, STRUCT, CELL, SPARSE])
def test_an_array_without_dimensions(client, kind):
    what = 'the array has 0 elements, because no dimensions arrived'
    assert complaint(client, array(kind, [])) == f'output 0: {what}'
    assert complaint(client, cell_array([1, 1], array(kind, []))) == f'output 0, [0]: {what}'


ONE, SHORT = double_array([1, 1], 1), double_array([2, 3], 1)
LACKS = 'the dimensions of the container announce {} elements, but this one did not arrive, or ' \
    'its class is not supported'


@pytest.mark.parametrize('outputs, place', [
    ([SHORT], 'output 0'),
    ([ONE, SHORT], 'output 1'),
    ([cell_array([1, 2], ONE, SHORT)], 'output 0, [1]'),
    ([cell_array([2, 2], ONE, ONE, SHORT, ONE)], 'output 0, [0, 1]'),
    ([cell_array([2, 1, 2], ONE, ONE, ONE, SHORT)], 'output 0, [1, 0, 1]'),
    ([struct_array([1, 1], [b'a', b'b'], ONE, SHORT)], "output 0, ['b']"),
    ([struct_array([1, 2], [b'a'], ONE, SHORT)], "output 0, [1]['a']"),
    ([struct_array([2, 2], [b'a'], ONE, ONE, SHORT, ONE)], "output 0, [0, 1]['a']"),
    ([struct_array([1, 1], [b'name'], cell_array([1, 4], ONE, ONE, ONE, SHORT))],
     "output 0, ['name'][3]"),
    ([ONE, cell_array([2, 1], ONE, struct_array([1, 1], [b'\xff'], SHORT))],
     "output 1, [1, 0]['\\udcff']"),
    # Although fields are read one after the other, the first element is named.
    ([struct_array([1, 3], [b'a', b'b'], ONE, ONE, ONE, SHORT, SHORT, ONE)], "output 0, [1]['b']"),
    ([cell_array([1, 3000], *[ONE] * 2000, SHORT, *[ONE] * 999)], 'output 0, [2000]'),
], ids=range(12))
def test_the_place_is_named(client, outputs, place):
    assert complaint(client, *outputs) == f'{place}: {SIX}'


@pytest.mark.parametrize('message, place, count', [
    (cell_array([1, 2], ONE), '[1]', 2),
    (cell_array([2, 2], ONE), '[1, 0]', 4),
    (cell_array([1, 2]), '[0]', 2),
    (struct_array([1, 1], [b'a', b'b'], ONE), "['b']", 1),
    (struct_array([1, 2], [b'a'], ONE), "[1]['a']", 2),
    (struct_array([2, 1], [b'a'], ONE), "[1, 0]['a']", 2),
    (cell_array([1, 1], array(OBJECT, [1, 1])), '[0]', 1),
    (cell_array([1, 1], cell_array([1, 9])), '[0][0]', 9),
], ids=range(8))
def test_missing_elements_of_containers(client, message, place, count):
    assert complaint(client, message) == f'output 0, {place}: {LACKS.format(count)}'


@pytest.mark.parametrize('rows, starts, dimensions', [
    ([5], [0, 1], [3, 1]),
    ([0], [1, 1], [3, 1]),
    ([0, 1], [0, 2, 1], [3, 2]),
    ([0, 1], [0, 1], [3, 3]),
    ([0], [0, 9], [3, 1]),
    ([0], [0, 1 << 63], [3, 1]),
    ([1 << 63], [0, 1], [3, 1]),
    ([], [], [3, 1]),
    ([0], [0, 1], [3]),
    ([0], [0, 1], [3, 1, 1]),
])
def test_indices_that_do_not_describe_a_sparse_array(client, rows, starts, dimensions):
    count = np.prod(dimensions)
    assert complaint(client, sparse_array(dimensions, rows, starts, [1.0])) == (
        f'output 0: the dimensions of the sparse array announce {count} elements, but the '
        'column starts and row indices that arrived do not describe them')


def sparse_part(number, kind, content):
    return array(SPARSE, [2, 3], 30, field(1, kind) + field(2, packed([0, 1])) + field(
        3, packed([0, 1, 2, 2])) + (field(number, field(1, content)) if content else b''))


@pytest.mark.parametrize('message', [
    sparse_array([2, 3], [0, 1], [0, 1, 2, 2], [1.5]),
    sparse_array([2, 3], [0, 1], [0, 1, 2, 2], []),
    sparse_array([2, 3], [0, 1], [0, 1, 2, 2], [1, 2], [3]),
    sparse_part(16, 0, b''),
    sparse_part(17, 1, packed([1])),
    sparse_part(17, 1, b''),
    sparse_part(18, 2, bytes(8)),  # of type single, whose values the library does not hand out
], ids=['one', 'none', 'imaginary', 'absent', 'logical', 'no_logical', 'single'])
def test_missing_values_of_sparse_arrays(client, message):
    assert complaint(client, message) == f'output 0: {SIX}'


def test_sparse_arrays_of_which_more_arrived(client):
    back = answer(client, sparse_array([2, 3], [0, 1, 0], [0, 1, 2, 2, 3], [1, 2, 3], [4, 5, 6]))
    assert back.toarray().tolist() == [[1 + 4j, 0, 0], [0, 2 + 5j, 0]]
    assert answer(client, sparse_part(17, 1, packed([1, 1]))).dtype == bool


HUGE = [1 << 25, 1]


@pytest.mark.parametrize('message', [
    double_array(HUGE, 1), double_array([1 << 32, 1 << 32], 1), array(UINT8, [1 << 33, 1]),
    array(DOUBLE, HUGE, 25, field(1, doubles(1)) + field(2, doubles(1))),
    array(CHAR, HUGE), array(CHAR, [1, 1 << 25]), array(LOGICAL, [(1 << 64) - 1, (1 << 64) - 1]),
    cell_array(HUGE, ONE), cell_array([1, 1 << 25], ONE), cell_array([1 << 40, 1 << 40]),
    struct_array(HUGE, [b'a'], ONE), struct_array([1, 1 << 25], [b'a'], ONE),
    struct_array([1 << 40, 1], [b'%d' % i for i in range(100)]),
    sparse_array([2, 1 << 25], [], [0], []), sparse_array([1 << 40, 2], [], [], []),
    cell_array([1, 3], *[double_array(HUGE, 1)] * 3),
], ids=range(16))
def test_dimensions_alone_take_no_memory(client, message):
    tracemalloc.start()  # NumPy tells it of its arrays
    try:
        complaint(client, message)
        _, most = tracemalloc.get_traced_memory()
    finally:
        tracemalloc.stop()
    assert most < 500_000


def test_structs_without_fields_take_no_memory(client):
    tracemalloc.start()
    try:
        back = answer(client, array(STRUCT, [1 << 15, 1 << 15]))
        _, most = tracemalloc.get_traced_memory()
    finally:
        tracemalloc.stop()
    assert back.shape == (1 << 15, 1 << 15) and back.dtype.names == () and most < 500_000


def handles():
    from hcyclient._library import Handle
    gc.collect()
    return sum(isinstance(found, Handle) for found in gc.get_objects())


@pytest.mark.parametrize('outputs', [
    [SHORT], [ONE, SHORT], [SHORT, ONE], [cell_array([1, 3], ONE, SHORT, ONE), ONE],
    [cell_array([2, 1], ONE, cell_array([1, 2], ONE)), ONE],
    [struct_array([2, 1], [b'a'], ONE, SHORT), ONE], [sparse_array([2, 2], [0], [0, 1, 1], [])],
    [array(STRUCT, [1 << 40, 1]), ONE],
], ids=range(8))
def test_an_error_that_is_kept_keeps_no_array(client, outputs):
    before = handles()
    with pytest.raises(hcyclient.TransportError) as raised:
        answer(client, *outputs)
    assert raised.value.__traceback__ and handles() == before


@pytest.mark.parametrize('output', [
    double_array([1000, 1], *range(1000)),
    array(CHAR, [1, 5000], 27, field(1, packed(range(5000)))),
    cell_array([1, 500], *[double_array([1, 1], i) for i in range(500)]),
    struct_array([2, 250], [b'a'], *[double_array([1, 1], i) for i in range(500)]),
    sparse_array([1000, 1], range(1000), [0, 1000], range(1000)),
], ids=['double', 'char', 'cell', 'struct', 'sparse'])
def test_the_limit_cuts_a_reply_of_unknown_length(output):
    reply = replies.result(output)
    with replies.answering(reply, chunked=True) as url:
        with hcyclient.Client(response_size_limit=len(reply)) as client:
            client.feval(url)
        for limit in range(100, len(reply), 501):
            with hcyclient.Client(response_size_limit=limit) as client:
                with pytest.raises(IncompleteReply, match=f'^{url}: output 0.*response_size_limit'):
                    client.feval(url)


def test_a_client_goes_on_after_an_incomplete_reply(client):
    for _ in range(3):
        assert complaint(client, SHORT) == f'output 0: {SIX}'
        assert answer(client, ONE).item() == 1


def test_deep_nesting_costs_no_more_than_what_arrived(client):
    message = SHORT
    for _ in range(40):
        message = cell_array([1, 1], message)
    assert complaint(client, message) == f'output 0, {"[0]" * 40}: {SIX}'
    message = SHORT
    for _ in range(40):
        message = struct_array([1, 2], [b'a'], message, message) if len(message) < 5000 else (
            struct_array([1, 2], [b'a'], message))
    place = "[0]['a']" * 40
    assert complaint(client, message) == f'output 0, {place}: {SIX}'
