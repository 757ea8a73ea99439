# SPDX-License-Identifier: Apache-2.0
"""Sparse matrices with SciPy and without."""
import subprocess
import sys

import numpy as np
import pytest
import scipy.sparse

from hcyclient import CompressedColumns


@pytest.mark.parametrize('dtype', ['float64', 'complex128', 'bool'])
def test_a_matrix_comes_back(echo, dtype):
    sent = scipy.sparse.csc_matrix(np.array([[0, 2, 0], [1, 0, 0], [0, 3, 0]], dtype))
    back = echo(sent)
    assert type(back) is scipy.sparse.csc_matrix and back.dtype == dtype
    np.testing.assert_array_equal(back.toarray(), sent.toarray())


def test_values_are_a_view(echo):
    values = echo(scipy.sparse.identity(4, format='csc')).data
    assert not values.flags.owndata


@pytest.mark.parametrize('form', ['csr', 'coo', 'dok', 'lil', 'dia', 'bsr'])
def test_every_form_of_them_is_sent(echo, form):
    sent = scipy.sparse.csc_matrix(np.array([[0, 2.0], [1, 0]])).asformat(form)
    back = echo(sent)
    assert type(back) is scipy.sparse.csc_matrix
    np.testing.assert_array_equal(back.toarray(), sent.toarray())


def test_duplicates_are_summed_and_rows_sorted(echo):
    sent = scipy.sparse.csc_matrix((np.array([1.0, 2, 3]), np.array([2, 0, 2]), np.array([0, 3])),
                                   (3, 1))
    back = echo(sent)
    assert back.indices.tolist() == [0, 2] and back.data.tolist() == [2, 4]
    assert sent.nnz == 3


def test_a_matrix_with_more_places_than_a_dense_one_may_have(echo):
    sent = scipy.sparse.csc_matrix((np.ones(2), (np.array([7, 99_999]), np.array([0, 99_999]))),
                                   (100_000, 100_000))
    back = echo(sent)
    assert back.shape == sent.shape and (back != sent).nnz == 0


def test_it_multiplies(server, client):
    sent = scipy.sparse.random(20, 30, 0.2, 'csr', random_state=1)
    vector = np.arange(30.0).reshape(-1, 1)
    np.testing.assert_allclose(client.feval(server + '/sparse/multiply', sent, vector),
                               sent @ vector)


def test_our_own_type_is_sent(echo):
    back = echo(CompressedColumns(np.array([1.5, 2]), np.array([0, 2]), np.array([0, 1, 2]),
                                  (3, 2)))
    np.testing.assert_array_equal(back.toarray(), [[1.5, 0], [0, 0], [0, 2]])


WITHOUT_SCIPY = '''
import sys
sys.modules['scipy'] = None
import numpy as np, hcyclient
from hcyclient import CompressedColumns
for values in np.array([1.5, 2]), np.array([1j, 2]), np.array([True, True]):
    sent = CompressedColumns(values, np.array([0, 2]), np.array([0, 1, 2]), (3, 2))
    with hcyclient.Client() as client:
        back = client.feval(sys.argv[1] + '/echo', sent)
        assert type(client.feval(sys.argv[1] + '/echo', back)) is CompressedColumns
    assert type(back) is CompressedColumns and back.shape == (3, 2)
    assert back.data.dtype == values.dtype
    for one, other in zip(back[:3], sent[:3]):
        np.testing.assert_array_equal(one, other)
'''


def test_without_scipy_it_is_our_own_type(server):
    subprocess.run([sys.executable, '-c', WITHOUT_SCIPY, server], check=True)


def test_scipy_is_not_imported_for_other_arguments(server):
    subprocess.run([sys.executable, '-c', '''
import sys, hcyclient
with hcyclient.Client() as client:
    client.feval(sys.argv[1] + '/echo', [1, {'a': 'b'}, None])
assert 'scipy' not in sys.modules
''', server], check=True)
