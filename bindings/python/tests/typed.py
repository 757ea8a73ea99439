# SPDX-License-Identifier: Apache-2.0
"""What a type checker makes of calls; nobody runs it."""
from __future__ import annotations

import pathlib
from concurrent.futures import Future
from typing import Any, AsyncIterator, Iterator

import hcyclient

client = hcyclient.Client(timeout=3, ca_file=pathlib.Path('ca.pem'), verify_peer=True)
client.feval('http://h/f', 1, [2], {'a': None})
pair: tuple[Any, ...] = client.feval('http://h/f', nargout=2)
first, second = pair
function: hcyclient.Function = client.function('http://h/f')
triple: tuple[Any, ...] = function(1, nargout=3)
cells: hcyclient.Cell[int] = hcyclient.Cell([1, 2])
first_cell: int = cells[0]
relative: hcyclient.Client = hcyclient.Client('http://h', connections=2)
plus: hcyclient.Function = relative.math.plus
future: Future[Any] = relative.submit('math/plus', 1, 2)
sums: Iterator[Any] = relative.map(plus, [1], [2], progress=lambda done, total: None)
rows: list[dict[str, Any]] = hcyclient.records({'a': 1})


async def calls() -> None:
    async with hcyclient.AsyncClient('http://h') as asynchronous:
        pair: tuple[Any, ...] = await asynchronous.feval('f', nargout=2)
        one: float = await asynchronous.math.plus(1, 2)
        function: hcyclient.AsyncFunction = asynchronous.function('f')
        sums: AsyncIterator[Any] = asynchronous.map(asynchronous.math.plus, [1], [2], workers=2)
        print(pair, one, function, [value async for value in sums])


try:
    number: float = function(1).item()
except hcyclient.FunctionError as error:
    identifier: str = error.identifier
    line: int = error.stack[0].line
except hcyclient.HttpError as error:
    status: int = error.status
except hcyclient.IncompleteReply as error:
    failure: hcyclient.TransportError = error
except hcyclient.TimeoutError as error:
    builtin: TimeoutError = error
    url: str = error.url

# Each of these is an error, or mypy tells of an ignorance that is not needed.
client.feval(b'http://h/f')  # type: ignore[call-overload]
client.feval('http://h/f', nargout='2')  # type: ignore[call-overload]
hcyclient.Client(timeout='1')  # type: ignore[arg-type]
hcyclient.Client(tls=True)  # type: ignore[call-arg]
nothing: int = function(1, nargout=0)  # type: ignore[assignment]
likewise: int = relative.math.plus(1, nargout=0)  # type: ignore[assignment]
words: hcyclient.Cell[str] = hcyclient.Cell([1])  # type: ignore[list-item]
