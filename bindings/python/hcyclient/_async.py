# SPDX-License-Identifier: Apache-2.0
"""Calls that a coroutine awaits."""
from __future__ import annotations

import asyncio
from types import TracebackType
from typing import Any, Literal, Optional, overload

from ._base import BaseClient, BaseFunction
from ._jobs import Task
from ._settings import Results


class AsyncClient(BaseClient):
    """Calls functions on a server from coroutines. Its arguments are those of Client.

    Calls are made on threads of the client, so that the event loop goes on meanwhile. A call that
    is cancelled, by `asyncio.timeout` for instance, ends at once for the one who awaits it; the
    server may go on with it.
    """

    @overload
    async def feval(self, url: str, *arguments: Any, results: Optional[Results] = None) -> Any: ...
    @overload
    async def feval(self, url: str, *arguments: Any, nargout: Literal[0],
                    results: Optional[Results] = None) -> None: ...
    @overload
    async def feval(self, url: str, *arguments: Any, nargout: Literal[1],
                    results: Optional[Results] = None) -> Any: ...
    @overload
    async def feval(self, url: str, *arguments: Any, nargout: Literal[2, 3, 4, 5, 6, 7, 8, 9],
                    results: Optional[Results] = None) -> tuple[Any, ...]: ...
    @overload
    async def feval(self, url: str, *arguments: Any, nargout: int,
                    results: Optional[Results] = None) -> Any: ...

    async def feval(self, url: str, *arguments: Any, nargout: int = 1,
                    results: Optional[Results] = None) -> Any:
        """Evaluate a function on a server.

        Arguments, result and exceptions are those of Client.feval(). The arguments are read on
        another thread: leave them unchanged until the call has ended.
        """
        return await self._evaluate(self._url(url), arguments, nargout, results)

    def function(self, url: str) -> AsyncFunction:
        """The function of this name or URL; calling it gives a coroutine.

        ``client.function('math/plus')`` is also written ``client.math.plus``. Raises ValueError if
        there is no such URL.
        """
        return AsyncFunction(self, url)

    async def close(self) -> None:
        """Close all connections. Calls that are under way raise RuntimeError at once. Closing again
        does nothing."""
        await asyncio.get_running_loop().run_in_executor(None, self._pool.close)

    async def __aenter__(self) -> AsyncClient:
        return self

    async def __aexit__(self, kind: Optional[type[BaseException]], error: Optional[BaseException],
                        traceback: Optional[TracebackType]) -> None:
        await self.close()

    def __getattr__(self, name: str) -> AsyncFunction:
        self._require_name(name)
        return AsyncFunction(self, name)

    async def _evaluate(self, url: bytes, arguments: tuple[Any, ...], nargout: int,
                        results: Optional[Results]) -> Any:
        task = Task(url, *self._kind(nargout, results), self, arguments)
        self._pool.start(task)
        try:
            return await asyncio.wrap_future(task.future)
        finally:
            if not task.future.done():
                self._pool.abandon(task)


class AsyncFunction(BaseFunction):
    """A function on a server, which an AsyncClient calls. Its attributes are functions, too."""

    @overload
    async def __call__(self, *arguments: Any, results: Optional[Results] = None) -> Any: ...
    @overload
    async def __call__(self, *arguments: Any, nargout: Literal[0],
                       results: Optional[Results] = None) -> None: ...
    @overload
    async def __call__(self, *arguments: Any, nargout: Literal[1],
                       results: Optional[Results] = None) -> Any: ...
    @overload
    async def __call__(self, *arguments: Any, nargout: Literal[2, 3, 4, 5, 6, 7, 8, 9],
                       results: Optional[Results] = None) -> tuple[Any, ...]: ...
    @overload
    async def __call__(self, *arguments: Any, nargout: int,
                       results: Optional[Results] = None) -> Any: ...

    async def __call__(self, *arguments: Any, nargout: int = 1,
                       results: Optional[Results] = None) -> Any:
        """See AsyncClient.feval()."""
        return await self.client._evaluate(self._encoded, arguments, nargout, results)
