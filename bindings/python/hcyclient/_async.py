# SPDX-License-Identifier: Apache-2.0
"""A client for asyncio."""
from __future__ import annotations

import asyncio
from types import TracebackType
from typing import Any, AsyncIterator, Iterable, Literal, Optional, Union, overload

from ._base import BaseClient, BaseFunction
from ._batches import Progress
from ._settings import Results


class AsyncClient(BaseClient):
    """Calls functions on a server from coroutines. The parameters are the same as for Client.

    Calls run on threads of the client, so the event loop is never blocked. Cancelling a call, for
    example with `asyncio.timeout`, ends it at once for the coroutine that awaits it; the server may
    still run the function to its end.
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

        The arguments, the result and the exceptions are those of Client.feval(). The arguments are
        read on another thread, so do not change them until the call has ended.
        """
        return await self._evaluate(self._url(url), arguments, nargout, results)

    def function(self, url: str) -> AsyncFunction:
        """Return the function with this name or URL. Calling it returns a coroutine.

        ``client.function('math/plus')`` is the same as ``client.math.plus``.

        Parameters
        ----------
        url : str
            As for feval().

        Returns
        -------
        AsyncFunction

        Raises
        ------
        TypeError, ValueError
            If the URL is not a str, or is not valid.
        """
        return AsyncFunction(self, url)

    def map(self, url: Union[str, AsyncFunction], *iterables: Iterable[Any],
            workers: Optional[int] = None, nargout: int = 1, results: Optional[Results] = None,
            progress: Optional[Progress] = None) -> AsyncIterator[Any]:
        """Call a function with the elements of iterables, several calls at a time.

        Parameters
        ----------
        url : str or AsyncFunction
            The function.
        *iterables, workers, nargout, results
            As for Client.map(). The iterables are read in the event loop, so they must not block.
        progress : callable, optional
            Called as ``progress(done, total)`` before each result is returned, in the event loop.
            The total is None if an iterable has no length.

        Returns
        -------
        asynchronous iterator
            The results in the order of the arguments, for ``async for``. The first failed call
            raises its exception in place of its result, and no further call starts. If the
            coroutine is cancelled while it waits for a result, or the iterator is closed, the
            calls in progress are abandoned and no further call starts.

        Raises
        ------
        TypeError, ValueError, RuntimeError
            As for Client.map().
        """
        return self._batch(url, iterables, workers, nargout, results, progress).awaited_results()

    async def close(self) -> None:
        """Close all connections.

        Calls in progress raise RuntimeError at once. Closing a closed client does nothing.
        """
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
        task = self._submitted(url, arguments, nargout, results)
        try:
            return await asyncio.wrap_future(task.future)
        finally:
            if not task.future.done():
                self._pool.abandon(task)


class AsyncFunction(BaseFunction):
    """A function on a server, called through an AsyncClient. Its attributes are functions too."""

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
