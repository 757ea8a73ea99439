#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""The blocks of the guide to Python. Usage: python.py SERVER_URL"""
import sys

server = sys.argv[1]

# A first call.
import hcyclient
import numpy as np

with hcyclient.Client(timeout=30) as client:
    A = np.array([[2.0, 1.0], [1.0, 3.0]])
    b = np.array([3.0, 5.0])
    x = client.feval(server + '/linalg/solve', A, b)
    print(x, np.allclose(A @ x, b))

client = hcyclient.Client()

# Several outputs, and none.
u, s, v = client.feval(server + '/linalg/svd', A, nargout=3)
print(np.allclose(u @ s @ v.T, A))
print(client.feval(server + '/echo', A, nargout=0))

# A function.
plus = client.function(server + '/math/plus')
print(f'{plus(2, 3):.2f}')

# Containers.
echo = client.function(server + '/echo')
print(echo(['text', {'size': 'large'}]))

statistics = client.feval(server + '/stats/describe', A)
print(*[column['mean'] for column in hcyclient.records(statistics)])

print(client.feval(server + '/text/split', 'one two'))

# Text of several rows.
print(echo(np.array(['ab', 'cd'])).tolist())

# Cells and structs in more than a row.
cells = np.empty((2, 1), object)
cells[:, 0] = ['first', 'second']
print(echo(cells), echo(cells, results='exact').shape)

points = np.zeros((2, 2), [('x', 'f8'), ('name', object)])
print(len(echo(points)), echo(points, results='exact').dtype.names)

# A cell of dictionaries.
from hcyclient import Cell

print(type(echo([{'a': 1}, {'a': 2}])).__name__)
print(type(echo(Cell([{'a': 1}, {'a': 2}]))).__name__)

# What cannot be carried.
try:
    echo('first', {'a': [1, 2, 3, {4}]})
except TypeError as error:
    print(error)

# Views.
large = echo(np.ones((1000, 1000)))
column = large[:, 0]  # a view of the library's own storage, which lives as long as it does
del large
print(column.sum(), column.flags.owndata)

# Complex integers.
dtype = hcyclient.complex_dtype('int16')
numbers = np.array([(1, 2), (3, -4)], dtype)
print(echo(numbers)['imag'])

# Sparse matrices.
from scipy.sparse import csc_matrix

matrix = csc_matrix(np.diag([1.0, 2.0, 3.0]))
print(client.feval(server + '/sparse/multiply', matrix, np.ones(3)))

# Errors.
for function in ('demo/fail', 'no/such/function'):
    try:
        client.feval(f'{server}/{function}', 'example:id', 'This was asked for.')
    except hcyclient.FunctionError as error:
        print(error.identifier, '-', error.message)
        for frame in error.stack:
            print(f'  in {frame.name}, {frame.file}, line {frame.line}')
    except hcyclient.HttpError as error:
        print(error.status, error.reason)
    except hcyclient.TransportError as error:
        print(error.text)

# Threads.
from concurrent.futures import ThreadPoolExecutor
from threading import local

own = local()  # a client for each thread


def start():
    own.client = hcyclient.Client()


def double(number):
    return own.client.feval(server + '/math/plus', number, number)


with ThreadPoolExecutor(4, initializer=start) as threads:
    print(*threads.map(double, range(5)))

client.close()
