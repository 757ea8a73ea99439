# SPDX-License-Identifier: Apache-2.0
"""Call functions deployed on a Halcyon compute server.

    import hcyclient, numpy as np

    with hcyclient.Client() as client:
        x = client.feval('http://127.0.0.1:8080/linalg/solve', np.eye(2), np.ones((2, 1)))
"""
from ._client import Client, Function
from ._tables import records
from ._values import Cell, CompressedColumns, complex_dtype
from .errors import Error, FunctionError, HttpError, IncompleteReply, StackFrame, TransportError

__all__ = [
    'Cell',
    'Client',
    'CompressedColumns',
    'Error',
    'Function',
    'FunctionError',
    'HttpError',
    'IncompleteReply',
    'StackFrame',
    'TransportError',
    'complex_dtype',
    'records',
]
__version__ = '1.1.0'
