# SPDX-License-Identifier: Apache-2.0
"""Calls."""
from __future__ import annotations

import os
import re
import weakref
from ctypes import byref, c_void_p, sizeof
from operator import index
from types import TracebackType
from typing import Any, Literal, Optional, Union, overload

import numpy as np

from ._connection import Connection
from ._inputs import handles_of
from ._library import LARGEST_SIZE, Handle
from ._natural import NaturalReader
from ._outputs import ExactReader
from ._records import last_failure

Results = Literal['natural', 'exact']
Path = Union[str, bytes, 'os.PathLike[str]', 'os.PathLike[bytes]']
_LONGEST_TIMEOUT = 2147483  # in seconds; libcurl takes no more
_LARGEST_LIMIT = 0xFFFFFFFF
_READERS = {'natural': NaturalReader(), 'exact': ExactReader()}
_SCHEME = re.compile(rb'https?://', re.IGNORECASE)


class Client:
    """One connection to a server, kept open between calls. One thread uses it at a time.

    timeout                  seconds that one call may take, a whole number; None for no limit
    response_size_limit      bytes of the largest reply that is accepted
    client_cert_file         the client's TLS certificate (PEM)
    client_key_file          the private key of that certificate (PEM)
    client_key_passphrase    what the private key is locked with
    ca_file                  the authorities that may have signed the server's certificate (PEM);
                             those of the system otherwise
    revocation_list_file     certificate revocation lists (PEM), one of each authority in the chain
    verify_hostname          whether the server's certificate has to name the host of the URL
    verify_peer              whether the server's certificate is verified
    results                  'natural' for numbers, vectors, strings, dictionaries and lists, as the
                             guide's table says; 'exact' to keep all shapes
    """

    def __init__(self, *, timeout: Optional[int] = 120, response_size_limit: int = 64 << 20,
                 client_cert_file: Optional[Path] = None, client_key_file: Optional[Path] = None,
                 client_key_passphrase: Union[str, bytes, None] = None,
                 ca_file: Optional[Path] = None, revocation_list_file: Optional[Path] = None,
                 verify_hostname: bool = True, verify_peer: bool = True,
                 results: Results = 'natural') -> None:
        self._reader = _reader(results)
        self._connection = Connection({
            'timeout': 0 if timeout is None else _number('timeout', timeout, 1, _LONGEST_TIMEOUT),
            'size_limit': _number('response_size_limit', response_size_limit, 0,
                                  _LARGEST_LIMIT),
            'cert_file': _file('client_cert_file', client_cert_file),
            'key_file': _file('client_key_file', client_key_file),
            'passphrase': _passphrase(client_key_passphrase),
            'ca_file': _file('ca_file', ca_file),
            'revocation_file': _file('revocation_list_file', revocation_list_file),
            'verify_hostname': _switch('verify_hostname', verify_hostname),
            'verify_peer': _switch('verify_peer', verify_peer),
        })
        self._feval = self._connection.runtime.feval
        weakref.finalize(self, self._connection.end)

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
        """Evaluates the function of this URL on its server, and returns its output, a tuple of
        them for a nargout over 1, None for 0. Blocks until the reply, the time-out or a failure.

        Raises TypeError if an argument cannot be carried; ValueError if the URL does not begin with
        http:// or https://, or nargout is not from 0 to 2147483647; HttpError, FunctionError or
        TransportError if the call fails; IncompleteReply if the reply does not hold all that its
        outputs consist of; RuntimeError if the client is closed, in use by another thread, or was
        made by another process."""
        return self._evaluate(_encoded(url), arguments, nargout, results)

    def function(self, url: str) -> Function:
        """The function of this URL, to be called like one of Python. Raises ValueError if the URL
        does not begin with http:// or https://."""
        return Function(self, url)

    def close(self) -> None:
        """Closes the connection. Closing again does nothing."""
        connection, turn = self._connection, object()
        if connection.process != os.getpid():
            return
        turns = connection.turns
        try:
            _begin(connection, turn)
            connection.end(turn)
        finally:
            if None in turns and turns[None] is turn:
                del turns[None]

    def __enter__(self) -> Client:
        return self

    def __exit__(self, kind: Optional[type[BaseException]], error: Optional[BaseException],
                 traceback: Optional[TracebackType]) -> None:
        self.close()

    def _evaluate(self, url: bytes, arguments: tuple[Any, ...], nargout: int,
                  results: Optional[Results]) -> Any:
        reader = self._reader if results is None else _reader(results)
        connection, turn = self._connection, object()
        turns = connection.turns
        try:
            _begin(connection, turn)
            return self._call(url, arguments, nargout, reader)
        finally:
            # No function is called here, and no interrupt delivered: the turn ends for certain.
            if None in turns and turns[None] is turn:
                del turns[None]

    def _call(self, url: bytes, arguments: tuple[Any, ...], nargout: int, reader: ExactReader
              ) -> Any:
        connection = self._connection
        if not connection.context or connection.process != os.getpid():
            raise _unusable(connection)
        nargout = _number('nargout', nargout, 0, LARGEST_SIZE)
        inputs = handles_of(arguments)
        count = len(inputs)
        pointers = (c_void_p * count)(*[handle.value for handle in inputs])
        if nargout == 1:
            outputs = [Handle()]
            failed = self._feval(connection.context, url, 1, byref(outputs[0]), count, pointers)
        else:
            room = (c_void_p * nargout)()
            # They own what the call will write, from the moment that it does.
            outputs = [Handle.from_buffer(room, i * sizeof(c_void_p)) for i in range(nargout)]
            failed = self._feval(connection.context, url, nargout, room, count, pointers)
        del inputs
        if failed:
            raise last_failure(connection.runtime, connection.context)
        values = reader.values_of(outputs)
        if nargout == 1:
            return values[0]
        return tuple(values) if nargout else None


class Function:
    """A function on a server, which a client calls."""

    def __init__(self, client: Client, url: str) -> None:
        self.client = client
        self.url = url
        self._encoded = _encoded(url)

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
        return self.client._evaluate(self._encoded, arguments, nargout, results)

    def __repr__(self) -> str:
        return f'<function {self.url}>'


def _begin(connection: Connection, turn: object) -> None:
    if connection.turns.setdefault(None, turn) is not turn:
        raise _unusable(connection)


def _unusable(connection: Connection) -> RuntimeError:
    if connection.process != os.getpid():
        return RuntimeError('this client was made before the process forked: make one in the child')
    if not connection.context:
        return RuntimeError('this client is closed')
    return RuntimeError('this client is in use by another call: each thread needs a client of its '
                        'own')


def _encoded(url: str) -> bytes:
    if not isinstance(url, str):
        raise TypeError(f'a URL is a str, not {type(url).__name__}')
    encoded = _c_text('a URL', url)
    # The library would have libcurl read local files, too, and guess a scheme that is missing.
    if not _SCHEME.match(encoded):
        raise ValueError('a URL begins with http:// or https://, and this one does not')
    return encoded


def _reader(results: Results) -> ExactReader:
    try:
        return _READERS[results]
    except (KeyError, TypeError):
        raise ValueError(f"results is 'natural' or 'exact', not {results!r}") from None


def _c_text(name: str, text: Union[str, bytes]) -> bytes:
    encoded = text.encode() if isinstance(text, str) else text
    if b'\0' in encoded:
        raise ValueError(f'{name} has a NUL inside')
    return encoded


def _file(name: str, path: Optional[Path]) -> bytes:
    return b'' if path is None else _c_text(name, os.fsencode(path))


def _passphrase(phrase: Union[str, bytes, None]) -> bytes:
    if not isinstance(phrase, (str, bytes, type(None))):
        raise TypeError(f'client_key_passphrase is a str or bytes, not {type(phrase).__name__}')
    return _c_text('client_key_passphrase', phrase or b'')


def _switch(name: str, value: bool) -> bool:
    """Nothing else: who gives None for what he does not care for would turn it off."""
    if not isinstance(value, (bool, np.bool_)):
        raise TypeError(f'{name} is True or False, not {type(value).__name__}')
    return bool(value)


def _number(name: str, value: int, least: int, most: int) -> int:
    try:
        number = index(value)
    except TypeError:
        raise TypeError(f'{name} is a whole number, not {type(value).__name__}') from None
    if not least <= number <= most:
        raise ValueError(f'{name} is from {least} to {most}, not {number}')
    return number
