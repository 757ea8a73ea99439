# SPDX-License-Identifier: Apache-2.0
"""The settings of a client, checked and converted for the library's setters."""
from __future__ import annotations

import errno
import math
import os
from operator import index
from typing import Any, Literal, Mapping, Optional, Union

import numpy as np

from ._natural import NaturalReader
from ._outputs import ExactReader
from ._urls import c_text

Results = Literal['natural', 'exact']
Path = Union[str, bytes, 'os.PathLike[str]', 'os.PathLike[bytes]']
_LONGEST_TIMEOUT = 2147483  # seconds; libcurl's own limit
_LARGEST_LIMIT = 0xFFFFFFFF
_MOST_CONNECTIONS = 1000
_READERS = {'natural': NaturalReader(), 'exact': ExactReader()}


def library_settings(settings: Mapping[str, Any]) -> dict[str, Any]:
    """The settings that the library takes, under the names of its setters. Raises TypeError,
    ValueError, or OSError if a file does not exist."""
    return {
        'timeout': _seconds(settings['timeout']),
        'size_limit': number('response_size_limit', settings['response_size_limit'], 0,
                             _LARGEST_LIMIT),
        'cert_file': _file('client_cert_file', settings['client_cert_file']),
        'key_file': _file('client_key_file', settings['client_key_file']),
        'passphrase': _passphrase(settings['client_key_passphrase']),
        'ca_file': _file('ca_file', settings['ca_file']),
        'revocation_file': _file('revocation_list_file', settings['revocation_list_file']),
        'verify_hostname': _switch('verify_hostname', settings['verify_hostname']),
        'verify_peer': _switch('verify_peer', settings['verify_peer']),
    }


def connection_count(count: int) -> int:
    return number('connections', count, 1, _MOST_CONNECTIONS)


def reader(results: Results) -> ExactReader:
    try:
        return _READERS[results]
    except (KeyError, TypeError):
        raise ValueError(f"results must be 'natural' or 'exact', not {results!r}") from None


def number(name: str, value: int, least: int, most: int) -> int:
    try:
        found = index(value)
    except TypeError:
        raise TypeError(f'{name} must be an integer, not {type(value).__name__}') from None
    if not least <= found <= most:
        raise ValueError(f'{name} must be between {least} and {most}, not {found}')
    return found


def _seconds(timeout: Union[int, float, None]) -> int:
    """Convert to the library's whole seconds, where 0 means no limit."""
    if timeout is None:
        return 0
    if isinstance(timeout, (str, bytes, bool)):
        raise TypeError(f'timeout must be a number of seconds, not {type(timeout).__name__}')
    try:
        seconds = float(timeout)
    except TypeError:
        raise TypeError('timeout must be a number of seconds, not '
                        f'{type(timeout).__name__}') from None
    if not 0 < seconds <= _LONGEST_TIMEOUT:
        raise ValueError(f'timeout must be more than 0 and at most {_LONGEST_TIMEOUT} seconds, not '
                         f'{timeout}; use None for no limit')
    return math.ceil(seconds)


def _file(name: str, path: Optional[Path]) -> bytes:
    if path is None:
        return b''
    try:
        encoded = c_text(name, os.fsencode(path))
    except TypeError:
        raise TypeError(f'{name} must be a path, not {type(path).__name__}') from None
    if not os.path.isfile(encoded):
        code = errno.EISDIR if os.path.isdir(encoded) else errno.ENOENT
        raise OSError(code, f'{name}: {os.strerror(code)}', os.fsdecode(encoded))
    return encoded


def _passphrase(phrase: Union[str, bytes, None]) -> bytes:
    if not isinstance(phrase, (str, bytes, type(None))):
        raise TypeError(f'client_key_passphrase must be str or bytes, not {type(phrase).__name__}')
    return c_text('client_key_passphrase', phrase or b'')


def _switch(name: str, value: bool) -> bool:
    """Accept only booleans. None, meant as "the default", would turn the check off."""
    if not isinstance(value, (bool, np.bool_)):
        raise TypeError(f'{name} must be True or False, not {type(value).__name__}')
    return bool(value)
