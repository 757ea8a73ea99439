# SPDX-License-Identifier: Apache-2.0
"""Calls that block."""
from __future__ import annotations

from concurrent.futures import Future
from types import TracebackType
from typing import Any, Iterable, Iterator, Literal, Optional, Union, overload

from ._base import BaseClient, BaseFunction
from ._batches import Progress, results_in_order
from ._jobs import AwaitedCall, Task
from ._settings import Results, number


class Client(BaseClient):
    """Calls functions on a server. Any number of threads may use a client at once.

    A client holds up to `connections` connections, which it opens when they are needed and keeps
    open until it is closed. It can be pickled: what comes out has the same settings and connections
    of its own. So it does in a child process after a fork.

    Parameters
    ----------
    server : str, optional
        URL of the server, such as ``http://127.0.0.1:8080``, which the names of functions are
        relative to. If it is not given, the environment variable ``HCY_SERVER`` names it; without
        one, calls take whole URLs.
    timeout : float or None
        Seconds that one call may take, over 0 and at most 2147483; None for no limit. The library
        counts whole seconds: fractions are rounded up. Waiting for a free connection does not
        count.
    response_size_limit : int
        Bytes of the largest reply that is accepted, from 0 to 4294967295.
    client_cert_file, client_key_file : path, optional
        The client's TLS certificate and its private key (PEM).
    client_key_passphrase : str or bytes, optional
        What the private key is locked with.
    ca_file : path, optional
        The authorities that may have signed the server's certificate (PEM); those of the system
        by default.
    revocation_list_file : path, optional
        Certificate revocation lists (PEM), one of each authority in the chain.
    verify_hostname, verify_peer : bool
        Whether the server's certificate has to name the host of the URL, and whether it is
        verified at all.
    results : {'natural', 'exact'}
        ``'natural'`` gives numbers, vectors, strings, dicts and lists, as the guide's table says;
        ``'exact'`` keeps the shapes of all arrays.
    connections : int
        How many calls may be under way at once, from 1 to 1000. Further ones wait.

    Raises
    ------
    TypeError, ValueError
        If an argument makes no sense.
    OSError
        If a file does not exist; its ``filename`` says which.
    Error
        If the library does not start, or memory is exhausted.
    """

    @overload
    def feval(self, url: str, *arguments: Any, results: Optional[Results] = None) -> Any: ...
    @overload
    def feval(self, url: str, *arguments: Any, nargout: Literal[0],
              results: Optional[Results] = None) -> None: ...
    @overload
    def feval(self, url: str, *arguments: Any, nargout: Literal[1],
              results: Optional[Results] = None) -> Any: ...
    @overload
    def feval(self, url: str, *arguments: Any, nargout: Literal[2, 3, 4, 5, 6, 7, 8, 9],
              results: Optional[Results] = None) -> tuple[Any, ...]: ...
    @overload
    def feval(self, url: str, *arguments: Any, nargout: int,
              results: Optional[Results] = None) -> Any: ...

    def feval(self, url: str, *arguments: Any, nargout: int = 1,
              results: Optional[Results] = None) -> Any:
        """Evaluate a function on a server, and wait for what it returns.

        An exception that a signal handler raises meanwhile, such as KeyboardInterrupt, ends the
        call at once. The server may go on with it.

        Parameters
        ----------
        url : str
            The name of the function on the client's server, such as ``'math/plus'``, or a whole
            URL, which begins with ``http://`` or ``https://``.
        *arguments
            The inputs.
        nargout : int
            How many outputs are wanted, from 0 to 2147483647.
        results : {'natural', 'exact'}, optional
            Another kind of results than the client's.

        Returns
        -------
        object
            The output; a tuple of them if `nargout` is over 1, None if it is 0.

        Raises
        ------
        TypeError
            If an argument cannot be carried, or is not of the type that it should be.
        ValueError
            If there is no such URL, or `nargout` is out of range.
        HttpError, FunctionError, TransportError
            If the call fails. TimeoutError, ConnectionError, CertificateError, ReplyTooLarge and
            IncompleteReply are kinds of TransportError.
        RuntimeError
            If the client is closed, even during the call.
        """
        return self._evaluate(self._url(url), arguments, nargout, results)

    def function(self, url: str) -> Function:
        """The function of this name or URL, to be called like one of Python.

        ``client.function('math/plus')`` is also written ``client.math.plus``. Raises ValueError if
        there is no such URL.
        """
        return Function(self, url)

    def submit(self, url: Union[str, Function], *arguments: Any, nargout: int = 1,
               results: Optional[Results] = None) -> Future[Any]:
        """Begin a call, and return at once a future that gives what feval() would.

        The arguments are read later, so leave them unchanged until the future is done. A call that
        waits for a connection can be cancelled.
        """
        return self._submitted(self._encoded(url), arguments, nargout, results).future

    def map(self, url: Union[str, Function], *iterables: Iterable[Any],
            workers: Optional[int] = None, nargout: int = 1, results: Optional[Results] = None,
            progress: Optional[Progress] = None) -> Iterator[Any]:
        """Call a function with the elements of iterables, several at a time.

        Parameters
        ----------
        url : str or Function
            The function.
        *iterables
            As for the built-in `map`: one for each argument, the shortest of which ends it. They
            are read as far as the calls need it.
        workers : int, optional
            How many calls may be under way at once; by default as many as there are connections.
        nargout, results
            As for feval().
        progress : callable, optional
            Called as ``progress(done, total)`` after each result, on the thread that reads them;
            the total is None if an iterable has no length.

        Returns
        -------
        iterator
            The results in the order of the arguments. The first call that failed raises in its
            place, and no other is begun then. Calls begin at once, not only when the first result
            is read.
        """
        encoded = self._encoded(url)
        most = self._pool.most if workers is None else number('workers', workers, 1, 1 << 20)
        return results_in_order(
            lambda arguments: self._submitted(encoded, arguments, nargout, results),
            self._pool.abandon, iterables, most, progress)

    def close(self) -> None:
        """Close all connections. Calls that are under way raise RuntimeError in the threads that
        wait for them, at once. Closing again does nothing."""
        self._pool.close()

    def __enter__(self) -> Client:
        return self

    def __exit__(self, kind: Optional[type[BaseException]], error: Optional[BaseException],
                 traceback: Optional[TracebackType]) -> None:
        self.close()

    def __getattr__(self, name: str) -> Function:
        self._require_name(name)
        return Function(self, name)

    def _encoded(self, url: Union[str, Function]) -> bytes:
        return url._encoded if isinstance(url, Function) else self._url(url)

    def _evaluate(self, url: bytes, arguments: tuple[Any, ...], nargout: int,
                  results: Optional[Results]) -> Any:
        call = AwaitedCall(url, *self._kind(nargout, results))
        call.prepare(arguments)
        return self._pool.finish(call)

    def _submitted(self, url: bytes, arguments: tuple[Any, ...], nargout: int,
                   results: Optional[Results]) -> Task:
        task = Task(url, *self._kind(nargout, results), self, arguments)
        self._pool.start(task)
        return task


class Function(BaseFunction):
    """A function on a server, which a client calls. An attribute of it is the function whose name
    is its own, a slash, and the attribute's: ``client.math.plus`` is ``math/plus``."""

    @overload
    def __call__(self, *arguments: Any, results: Optional[Results] = None) -> Any: ...
    @overload
    def __call__(self, *arguments: Any, nargout: Literal[0],
                 results: Optional[Results] = None) -> None: ...
    @overload
    def __call__(self, *arguments: Any, nargout: Literal[1],
                 results: Optional[Results] = None) -> Any: ...
    @overload
    def __call__(self, *arguments: Any, nargout: Literal[2, 3, 4, 5, 6, 7, 8, 9],
                 results: Optional[Results] = None) -> tuple[Any, ...]: ...
    @overload
    def __call__(self, *arguments: Any, nargout: int,
                 results: Optional[Results] = None) -> Any: ...

    def __call__(self, *arguments: Any, nargout: int = 1,
                 results: Optional[Results] = None) -> Any:
        """See Client.feval()."""
        return self.client._evaluate(self._encoded, arguments, nargout, results)
