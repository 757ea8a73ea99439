# SPDX-License-Identifier: Apache-2.0
"""Results as tables of pandas and NumPy."""
import subprocess
import sys

import numpy as np
import pandas
import pytest

import hcyclient
from hcyclient import to_pandas, to_structured

COLUMNS = {'x': np.array([1.5, 2.5]), 'n': np.array([1, 2], 'int8'), 't': ['a', 'bc'],
           'b': np.array([True, False])}
ROWS = [{name: column[i] for name, column in COLUMNS.items()} for i in range(2)]


@pytest.mark.parametrize('results', ['natural', 'exact'])
@pytest.mark.parametrize('sent', [COLUMNS, ROWS, np.array([tuple(row.values()) for row in ROWS], [
    (name, object) for name in COLUMNS])], ids=['columns', 'rows', 'structured'])
def test_a_table(server, results, sent):
    with hcyclient.Client(server, results=results) as client:
        back = client.echo(sent)
    frame = to_pandas(back)
    assert list(frame.columns) == list(COLUMNS) and frame.index.tolist() == [0, 1]
    assert [str(dtype) for dtype in frame.dtypes][:2] == ['float64', 'int8']
    assert frame['t'].tolist() == ['a', 'bc'] and frame['b'].dtype == bool
    assert frame['x'].tolist() == [1.5, 2.5] and frame['n'].tolist() == [1, 2]
    array = to_structured(back)
    assert array.dtype == [('x', 'f8'), ('n', 'i1'), ('t', '<U2'), ('b', '?')]
    assert array.tolist() == [(1.5, 1, 'a', True), (2.5, 2, 'bc', False)]


def test_a_frame_comes_back(server):
    frame = pandas.DataFrame({'x': [1.5, 2], 't': ['a', 'b']})
    with hcyclient.Client(server) as client:
        pandas.testing.assert_frame_equal(to_pandas(client.echo(frame)), frame)


def test_one_row(server):
    with hcyclient.Client(server) as client:
        frame = to_pandas(client.stats.describe([1, 2, 3]))
    assert len(frame) == 1 and frame['mean'][0] == 2 and frame['mean'].dtype == float


def test_values_that_have_no_dtype_in_common():
    frame = to_pandas([{'a': 1.5, 'b': np.ones(2)}, {'a': 'x', 'b': None}])
    assert frame['a'].tolist() == [1.5, 'x'] and frame['b'][0].tolist() == [1, 1]
    assert to_structured({'a': [1.5, 'x']}).dtype == [('a', object)]
    assert to_structured([]).shape == (0,) and to_pandas([]).shape == (0, 0)


def test_what_is_no_table():
    for convert in to_pandas, to_structured:
        with pytest.raises(ValueError, match='differ in length: a has 2, b has 3'):
            convert({'a': np.ones(2), 'b': np.ones(3)})
        with pytest.raises(ValueError, match=r'a is not a column, but an array of shape \(2, 2\)'):
            convert({'a': np.ones((2, 2))})
        with pytest.raises(TypeError, match=r'records\(\) takes'):
            convert(3)


def test_pandas_is_imported_only_for_tables(server):
    subprocess.run([sys.executable, '-c', '''
import sys, hcyclient
with hcyclient.Client(sys.argv[1]) as client:
    back = client.echo([{'a': 1.0}, {'a': 2.0}])
assert hcyclient.to_structured(back)['a'].tolist() == [1, 2]
assert 'pandas' not in sys.modules
''', server], check=True)
