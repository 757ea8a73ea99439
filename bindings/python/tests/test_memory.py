# SPDX-License-Identifier: Apache-2.0
"""Calls leave nothing behind. HCYCLIENT_LEAK_CALLS is how many are made."""
import gc
import os
import resource

import numpy as np
import pytest
import scipy.sparse

import hcyclient

CALLS = int(os.environ.get('HCYCLIENT_LEAK_CALLS', '20000'))
KEPT_KIB = 1024


def resident_kib():
    gc.collect()
    with open('/proc/self/statm', encoding='ascii') as file:
        return int(file.read().split()[1]) * resource.getpagesize() // 1024


def fail(call, *arguments):
    with pytest.raises(hcyclient.Error):
        call(*arguments)


def refuse(call, *arguments):
    with pytest.raises(TypeError):
        call(*arguments)


def test_calls_leave_nothing_behind(server, client):
    functions = {name: client.function(server + name) for name in ('/echo', '/demo/fail', '/no')}
    numbers = np.arange(60.0).reshape(6, 10)
    mixed = [numbers.astype('i2'), 'text', {'a': numbers > 3, 'b': [None, 1j]}]
    matrix = scipy.sparse.identity(5, format='csc')
    structs = np.array([[(1, 'x')], [(2, 'y')]], [('n', object), ('t', object)])

    def several(count):
        """As many calls, most of them of the cheaper kinds."""
        echo = functions['/echo']
        for i in range(count // 20):
            for _ in range(8):
                echo(numbers)
                echo(1.5)
            echo(mixed, structs, nargout=2)
            echo(matrix)
            fail(functions['/demo/fail'], 'a:b', 'c', 100)
            fail(functions['/no'], numbers)
            refuse(echo, [numbers, {1}])
            if i % 10 == 0:
                with hcyclient.Client() as other:
                    other.feval(server + '/echo', 'x', nargout=0)

    several(max(2000, CALLS // 10))
    before = resident_kib()
    several(CALLS)
    assert resident_kib() - before < KEPT_KIB
