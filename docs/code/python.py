#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""The blocks of the guide to Python. Usage: python.py SERVER_URL"""
import os
import sys

os.environ['HCY_SERVER'] = server = sys.argv[1]

# A first call.
import hcyclient
import numpy as np

client = hcyclient.Client()  # uses the server in HCY_SERVER

A = np.array([[2.0, 1.0], [1.0, 3.0]])
b = np.array([3.0, 5.0])
x = client.linalg.solve(A, b)
print(x, np.allclose(A @ x, b))

# Three ways to name a function.
print(client.math.plus(2, 3))
print(client.feval('math/plus', 2, 3))
print(client.feval(server + '/math/plus', 2, 3))

# A block that closes the client.
with hcyclient.Client(server, timeout=30) as other:
    print(f'{other.math.plus(1, 1.5):.2f}')

# Several outputs, and none.
u, s, v = client.linalg.svd(A, nargout=3)
print(np.allclose(u @ s @ v.T, A))
print(client.echo(A, nargout=0))

# Lists.
from hcyclient import Cell

print(client.linalg.solve([[2, 0], [0, 4]], [1, 2]))
print(type(client.echo(Cell([1, 2]))).__name__)

# What cannot be converted.
try:
    client.echo('first', {'a': [1, 'two', {3}]})
except TypeError as error:
    print(error)

# One struct or several.
statistics = client.stats.describe(A)
print(*[column['mean'] for column in hcyclient.records(statistics)])

# Tables.
import pandas

frame = pandas.DataFrame({'part': ['box', 'lid'], 'weight': [2.5, 0.5]})
columns = client.echo(frame)
print(columns['part'], columns['weight'].sum())
print(hcyclient.to_pandas(columns))

print(hcyclient.to_structured(columns)['weight'])

# Exact results.
row = np.array([[1.0, 2.0, 3.0]])
print(client.echo(row).shape, client.echo(row, results='exact').shape)

# Strings in several rows.
print(client.echo(np.array(['ab', 'cd'])).tolist())

# Cells and structs in more than a row.
cells = np.empty((2, 1), object)
cells[:, 0] = ['first', 'second']
print(client.echo(cells), client.echo(cells, results='exact').shape)

points = np.zeros((2, 2), [('x', 'f8'), ('name', object)])
print(len(client.echo(points)), client.echo(points, results='exact').dtype.names)

# A cell of dictionaries.
print(type(client.echo([{'a': 1}, {'a': 2}])).__name__)
print(type(client.echo(Cell([{'a': 1}, {'a': 2}]))).__name__)

# Views.
large = client.echo(np.ones((1000, 1000)))
column = large[:, 0]  # a view of the library's storage, which it keeps alive
del large
print(column.sum(), column.flags.owndata)

# Complex integers.
dtype = hcyclient.complex_dtype('int16')
numbers = np.array([(1, 2), (3, -4)], dtype)
print(client.echo(numbers)['imag'])

# Sparse matrices.
from scipy.sparse import csc_matrix

matrix = csc_matrix(np.diag([1.0, 2.0, 3.0]))
print(client.sparse.multiply(matrix, np.ones(3)))

# Many calls at once.
print(*client.map('math/plus', range(5), range(5), workers=4))


def show(done, total):
    print(f'{done} of {total}')


sums = list(client.map('math/plus', [1, 2, 3], [10, 20, 30], progress=show))

future = client.submit('math/plus', 2, 3)
print(future.result())

# Threads.
from concurrent.futures import ThreadPoolExecutor

with ThreadPoolExecutor(4) as threads:
    print(*threads.map(client.math.plus, range(5), range(5)))

# Coroutines.
import asyncio


async def main():
    async with hcyclient.AsyncClient(server) as client:
        print(*await asyncio.gather(*(client.math.plus(i, i) for i in range(5))))
        print(*[value async for value in client.map('math/plus', range(5), range(5), workers=4)])
        try:
            await asyncio.wait_for(client.demo.sleep(60), timeout=0.1)
        except asyncio.TimeoutError:
            print('cancelled')


asyncio.run(main())

# An interrupt.
import signal


def ring(signum, frame):
    raise TimeoutError('half a second is enough')


signal.signal(signal.SIGALRM, ring)
signal.setitimer(signal.ITIMER_REAL, 0.5)
try:
    client.demo.sleep(60)
except TimeoutError as error:
    print(error)
print(client.math.plus(2, 3))

# Errors.
for name in ('demo/fail', 'no/such/function'):
    try:
        client.feval(name, 'example:id', 'This was asked for.')
    except hcyclient.FunctionError as error:
        print(error.identifier, '-', error.message)
        for frame in error.stack:
            print(f'  in {frame.name}, {frame.file}, line {frame.line}')
    except hcyclient.HttpError as error:
        print(error.status, error.reason)
    except ConnectionError as error:  # Python's own, the base class of hcyclient.ConnectionError
        print('try again later:', error)

# The log.
import logging

logging.basicConfig(stream=sys.stdout, format='%(name)s %(message)s')
logging.getLogger('hcyclient').setLevel(logging.DEBUG)

client.close()
