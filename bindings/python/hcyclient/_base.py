# SPDX-License-Identifier: Apache-2.0
"""What the two kinds of client share: the settings, and a pool of connections."""
from __future__ import annotations

import weakref
from typing import Any, Iterable, Optional, TypeVar, Union

from ._batches import Batch, Progress
from ._jobs import Task
from ._library import LARGEST_SIZE
from ._outputs import ExactReader
from ._pool import Pool
from ._settings import Path, Results, connection_count, library_settings, number, reader
from ._urls import function_url, public, server_url

Self = TypeVar('Self', bound='BaseFunction')


class BaseClient:
    """See Client."""

    def __init__(self, server: Optional[str] = None, *,
                 timeout: Union[int, float, None] = 120, response_size_limit: int = 64 << 20,
                 client_cert_file: Optional[Path] = None, client_key_file: Optional[Path] = None,
                 client_key_passphrase: Union[str, bytes, None] = None,
                 ca_file: Optional[Path] = None, revocation_list_file: Optional[Path] = None,
                 verify_hostname: bool = True, verify_peer: bool = True,
                 results: Results = 'natural', connections: int = 8) -> None:
        self._settings: dict[str, Any] = {
            'server': server_url(server), 'timeout': timeout,
            'response_size_limit': response_size_limit, 'client_cert_file': client_cert_file,
            'client_key_file': client_key_file, 'client_key_passphrase': client_key_passphrase,
            'ca_file': ca_file, 'revocation_list_file': revocation_list_file,
            'verify_hostname': verify_hostname, 'verify_peer': verify_peer, 'results': results,
            'connections': connections}
        self._reader = reader(results)
        self._pool = Pool(library_settings(self._settings), connection_count(connections))
        # At exit, the operating system closes the connections.
        weakref.finalize(self, self._pool.close, wait=False).atexit = False

    @property
    def server(self) -> Optional[str]:
        """The URL that function names are relative to, or None."""
        server: Optional[str] = self._settings['server']
        return server

    @property
    def settings(self) -> dict[str, Any]:
        """The arguments that create an equal client, including the pass phrase."""
        return dict(self._settings)

    @property
    def closed(self) -> bool:
        """Whether the client has been closed."""
        return self._pool.closed

    def _kind(self, nargout: int, results: Optional[Results]) -> tuple[int, ExactReader]:
        """The number of outputs of a call, and their reader."""
        return (number('nargout', nargout, 0, LARGEST_SIZE),
                self._reader if results is None else reader(results))

    def _url(self, name: str) -> bytes:
        return function_url(self._settings['server'], name)

    def _encoded(self, url: Union[str, BaseFunction]) -> bytes:
        return url._encoded if isinstance(url, BaseFunction) else self._url(url)

    def _submitted(self, url: bytes, arguments: tuple[Any, ...], nargout: int,
                   results: Optional[Results]) -> Task:
        task = Task(url, *self._kind(nargout, results), self, arguments)
        self._pool.start(task)
        return task

    def _batch(self, url: Union[str, BaseFunction], iterables: tuple[Iterable[Any], ...],
               workers: Optional[int], nargout: int, results: Optional[Results],
               progress: Optional[Progress]) -> Batch:
        encoded = self._encoded(url)
        most = self._pool.most if workers is None else number('workers', workers, 1, 1 << 20)
        return Batch(lambda arguments: self._submitted(encoded, arguments, nargout, results),
                     self._pool.abandon, iterables, most, progress)

    def _require_name(self, name: str) -> None:
        """Raise AttributeError unless this can be the name of a function."""
        if name.startswith('_'):
            raise AttributeError(f'{type(self).__name__!r} object has no attribute {name!r}')
        if self._settings['server'] is None:
            kind = type(self).__name__
            raise AttributeError(f'{kind!r} object has no attribute {name!r}, and no server that '
                                 'could have a function of that name; pass the URL of one, as in '
                                 f"{kind}('http://127.0.0.1:8080')")

    def __reduce__(self) -> tuple[Any, ...]:
        return _create, (type(self), self._settings)

    def __repr__(self) -> str:
        server = self._settings['server']
        where = public(server) if server else 'without a server'
        pool = self._pool
        state = 'closed' if pool.closed else f'{pool.connections} of {pool.most} connections open'
        return f'<{type(self).__name__} {where}, {state}>'


def _create(kind: type[BaseClient], settings: dict[str, Any]) -> BaseClient:
    return kind(**settings)


class BaseFunction:
    """A function on a server. Its attributes are the functions below its name."""

    def __init__(self, client: Any, name: str) -> None:
        self.client = client
        self._encoded: bytes = client._url(name)

    @property
    def url(self) -> str:
        """The full URL of the function."""
        return self._encoded.decode()

    def __getattr__(self: Self, name: str) -> Self:
        if name.startswith('_'):
            raise AttributeError(f'{type(self).__name__!r} object has no attribute {name!r}')
        return type(self)(self.client, f'{self.url}/{name}')

    def __reduce__(self) -> tuple[Any, ...]:
        return type(self), (self.client, self.url)

    def __repr__(self) -> str:
        return f'<function {public(self._encoded)}>'
