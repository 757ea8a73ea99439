# SPDX-License-Identifier: Apache-2.0
"""A client whose calls block."""
from __future__ import annotations

from concurrent.futures import Future
from types import TracebackType
from typing import Any, Iterable, Iterator, Literal, Optional, Union, overload

from ._base import BaseClient, BaseFunction
from ._batches import Progress
from ._jobs import AwaitedCall
from ._settings import Results


class Client(BaseClient):
    """Calls functions on a server. Any number of threads may use a client at once.

    A client opens up to `connections` connections when they are needed, and keeps them open until
    it is closed. Clients can be pickled: the copy has the same settings, and its own connections.
    After a fork, the client in the child process opens its own connections too.

    Parameters
    ----------
    server : str, optional
        URL of the server, such as ``http://127.0.0.1:8080``. The names of functions are relative
        to it. The default is the environment variable ``HCY_SERVER``; if it is not set either,
        calls need full URLs.
    timeout : float or None
        Seconds that one call may take: more than 0 and at most 2147483, or None for no limit.
        Fractions are rounded up to whole seconds. Waiting for a free connection does not count.
    response_size_limit : int
        Size of the largest reply to accept, in bytes, between 0 and 4294967295.
    client_cert_file, client_key_file : path, optional
        The client's TLS certificate and its private key (PEM).
    client_key_passphrase : str or bytes, optional
        Pass phrase of the private key.
    ca_file : path, optional
        Certificate authorities to trust (PEM); those of the system by default.
    revocation_list_file : path, optional
        Certificate revocation lists (PEM), one for each authority in the chain.
    verify_hostname, verify_peer : bool
        Whether the server's certificate must name the host of the URL, and whether its chain is
        verified.
    results : {'natural', 'exact'}
        ``'natural'`` returns numbers, vectors, strings, dicts and lists, as described in the
        guide; ``'exact'`` keeps the shape of every array.
    connections : int
        How many calls may be in progress at once, between 1 and 1000. Further calls wait.

    Raises
    ------
    TypeError, ValueError
        If an argument is not valid.
    OSError
        If a file does not exist; the attribute ``filename`` says which.
    Error
        If the library fails to start, or memory is exhausted.
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
        """Evaluate a function on a server and wait for the result.

        An exception that a signal handler raises in the meantime, such as KeyboardInterrupt, ends
        the call at once. The server may still run the function to its end.

        Parameters
        ----------
        url : str
            The name of the function on the client's server, such as ``'math/plus'``, or its full
            URL, which begins with ``http://`` or ``https://``.
        *arguments
            The inputs.
        nargout : int
            The number of outputs to request, between 0 and 2147483647.
        results : {'natural', 'exact'}, optional
            The kind of results; by default, the client's.

        Returns
        -------
        object
            The output; a tuple of outputs if `nargout` is more than 1, None if it is 0.

        Raises
        ------
        TypeError
            If an input cannot be converted, or another argument has the wrong type.
        ValueError
            If the URL is not valid, or `nargout` is out of range.
        HttpError, FunctionError, TransportError
            If the call fails. TimeoutError, ConnectionError, CertificateError, ReplyTooLarge and
            IncompleteReply are subclasses of TransportError.
        RuntimeError
            If the client is closed before or during the call.
        """
        return self._evaluate(self._url(url), arguments, nargout, results)

    def function(self, url: str) -> Function:
        """Return the function with this name or URL, which is called like a Python function.

        ``client.function('math/plus')`` is the same as ``client.math.plus``.

        Parameters
        ----------
        url : str
            As for feval().

        Returns
        -------
        Function

        Raises
        ------
        TypeError, ValueError
            If the URL is not a str, or is not valid.
        """
        return Function(self, url)

    def submit(self, url: Union[str, Function], *arguments: Any, nargout: int = 1,
               results: Optional[Results] = None) -> Future[Any]:
        """Start a call without waiting for it.

        The arguments are read later, so do not change them until the future is done. A call that
        still waits for a connection can be cancelled.

        Parameters
        ----------
        url : str or Function
            The function.
        *arguments, nargout, results
            As for feval().

        Returns
        -------
        concurrent.futures.Future
            Its result and its exception are those of feval().

        Raises
        ------
        TypeError, ValueError
            If the URL, `nargout` or `results` is not valid.
        RuntimeError
            If the client is closed.
        """
        return self._submitted(self._encoded(url), arguments, nargout, results).future

    def map(self, url: Union[str, Function], *iterables: Iterable[Any],
            workers: Optional[int] = None, nargout: int = 1, results: Optional[Results] = None,
            progress: Optional[Progress] = None) -> Iterator[Any]:
        """Call a function with the elements of iterables, several calls at a time.

        Parameters
        ----------
        url : str or Function
            The function.
        *iterables
            One for each argument; the calls end with the shortest one, as in the built-in `map`.
            They are read only as far as the calls need them.
        workers : int, optional
            How many calls may be in progress at once; by default, one for each connection.
        nargout, results
            As for feval().
        progress : callable, optional
            Called as ``progress(done, total)`` before each result is returned, on the thread that
            reads the results. The total is None if an iterable has no length.

        Returns
        -------
        iterator
            The results in the order of the arguments. The first failed call raises its exception
            in place of its result, and no further call starts. The first calls start at once, not
            when the first result is read.

        Raises
        ------
        TypeError, ValueError
            If there are no iterables, or the URL, `workers`, `nargout` or `results` is not valid.
        RuntimeError
            If the client is closed.
        """
        return self._batch(url, iterables, workers, nargout, results, progress).results()

    def close(self) -> None:
        """Close all connections.

        Calls in progress raise RuntimeError at once in the threads that wait for them. Closing a
        closed client does nothing.
        """
        self._pool.close()

    def __enter__(self) -> Client:
        return self

    def __exit__(self, kind: Optional[type[BaseException]], error: Optional[BaseException],
                 traceback: Optional[TracebackType]) -> None:
        self.close()

    def __getattr__(self, name: str) -> Function:
        self._require_name(name)
        return Function(self, name)

    def _evaluate(self, url: bytes, arguments: tuple[Any, ...], nargout: int,
                  results: Optional[Results]) -> Any:
        call = AwaitedCall(url, *self._kind(nargout, results))
        call.prepare(arguments)
        return self._pool.finish(call)


class Function(BaseFunction):
    """A function on a server, called through a Client.

    Its attributes are the functions below its name: ``client.math.plus`` is ``math/plus``.
    """

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
