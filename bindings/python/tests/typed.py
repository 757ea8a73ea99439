# SPDX-License-Identifier: Apache-2.0
"""What a type checker makes of calls; nobody runs it."""
from __future__ import annotations

import pathlib
from typing import Any

import hcyclient

client = hcyclient.Client(timeout=3, ca_file=pathlib.Path('ca.pem'), verify_peer=True)
client.feval('http://h/f', 1, [2], {'a': None})
pair: tuple[Any, ...] = client.feval('http://h/f', nargout=2)
first, second = pair
function: hcyclient.Function = client.function('http://h/f')
triple: tuple[Any, ...] = function(1, nargout=3)
cells: list[Any] = hcyclient.Cell([1, 2])

try:
    number: float = function(1).item()
except hcyclient.FunctionError as error:
    identifier: str = error.identifier
    line: int = error.stack[0].line
except hcyclient.HttpError as error:
    status: int = error.status
except hcyclient.IncompleteReply as error:
    failure: hcyclient.TransportError = error

# Each of these is an error, or mypy tells of an ignorance that is not needed.
client.feval(b'http://h/f')  # type: ignore[call-overload]
client.feval('http://h/f', nargout='2')  # type: ignore[call-overload]
hcyclient.Client(timeout=1.5)  # type: ignore[arg-type]
hcyclient.Client(tls=True)  # type: ignore[call-arg]
nothing: int = function(1, nargout=0)  # type: ignore[assignment]
