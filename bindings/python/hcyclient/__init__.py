# SPDX-License-Identifier: Apache-2.0
"""Call functions deployed on a Halcyon compute server.

    import hcyclient, numpy as np

    with hcyclient.Client('http://127.0.0.1:8080') as client:
        x = client.linalg.solve(np.eye(2), np.ones(2))
"""
from ._async import AsyncClient, AsyncFunction
from ._client import Client, Function
from ._tables import records, to_pandas, to_structured
from ._values import Cell, CompressedColumns, complex_dtype
from .errors import CertificateError, ConnectionError, Error, FunctionError, HttpError
from .errors import IncompleteReply, ReplyTooLarge, StackFrame, TimeoutError, TransportError

__all__ = [
    'AsyncClient',
    'AsyncFunction',
    'Cell',
    'CertificateError',
    'Client',
    'CompressedColumns',
    'ConnectionError',
    'Error',
    'Function',
    'FunctionError',
    'HttpError',
    'IncompleteReply',
    'ReplyTooLarge',
    'StackFrame',
    'TimeoutError',
    'TransportError',
    'complex_dtype',
    'records',
    'to_pandas',
    'to_structured',
]
__version__ = '1.1.0'
