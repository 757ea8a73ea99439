#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""The blocks of the guide to tests without a server. Usage: offline_python.py SERVER_URL"""
import os
import sys

os.environ.setdefault('HCY_LOCAL_SERVER', os.path.abspath('build/release/server/hcy-local-server'))

# Python functions.
import hcyclient
import hcyclient.testing
import numpy as np

with hcyclient.testing.Server({'my/scale': lambda a, k: a * k}) as server:
    with hcyclient.Client() as client:
        tens = client.feval(server.url('my/scale'), np.array([1.0, 2.0, 3.0]), 10)
        print(np.ravel(tens))
    print(server.calls[0].function, server.calls[0].nargout)

# Their failures.
def price(article):
    raise LookupError(f'there is no {article}')

with hcyclient.testing.Server({'shop/price': price}, options=['--fault', 'shop/*=503@1']) as server:
    with hcyclient.Client() as client:
        for _ in range(2):
            try:
                client.feval(server.url('shop/price'), 'teapot')
            except hcyclient.HttpError as error:
                print('status', error.status)
            except hcyclient.FunctionError as error:
                print(error.identifier, '-', error.message)

# Recorded calls.
lab = sys.argv[1]
with hcyclient.testing.Server(upstream=lab, record='calls') as server:
    with hcyclient.Client() as client:
        client.feval(server.url('math/plus'), 2, 3)

with hcyclient.testing.Server(replay='calls') as server:
    with hcyclient.Client() as client:
        print(float(client.feval(server.url('math/plus'), 2, 3)))
