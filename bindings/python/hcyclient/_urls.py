# SPDX-License-Identifier: Apache-2.0
"""The URLs of servers and functions."""
from __future__ import annotations

import os
import re
from typing import Optional, Union

_SCHEME = re.compile(rb'https?://', re.IGNORECASE)
_ANY_SCHEME = re.compile(r'[A-Za-z][A-Za-z0-9+.-]*:')
_USER = re.compile(r'(?<=://)[^/?#]*@')


def c_text(name: str, text: Union[str, bytes]) -> bytes:
    encoded = text.encode() if isinstance(text, str) else text
    if b'\0' in encoded:
        raise ValueError(f'{name} contains a NUL character')
    return encoded


def server_url(server: Optional[str]) -> Optional[str]:
    """The URL of the server without a slash at its end. None means HCY_SERVER."""
    name = 'the URL of the server'
    if server is None:
        server = os.environ.get('HCY_SERVER') or None
        name = 'the URL in the environment variable HCY_SERVER'
        if server is None:
            return None
    if not isinstance(server, str):
        raise TypeError(f'{name} must be a str, not {type(server).__name__}')
    if not _SCHEME.match(c_text(name, server)):
        raise ValueError(f'{name} must begin with http:// or https://')
    if '?' in server or '#' in server:
        raise ValueError(f'{name} must not have a query or a fragment')
    return server.rstrip('/')


def function_url(server: Optional[str], name: str) -> bytes:
    """The URL of a function, from its URL or its name on the server."""
    if not isinstance(name, str):
        raise TypeError(f'the URL must be a str, not {type(name).__name__}')
    encoded = c_text('the URL', name)
    if _SCHEME.match(encoded):
        return encoded
    # libcurl would also read local files, and guess a missing scheme.
    if _ANY_SCHEME.match(name) or name.startswith('//') or '://' in name:
        raise ValueError('the URL must begin with http:// or https://')
    if not name.strip('/ '):
        raise ValueError('the name of a function is empty')
    if server is None:
        raise ValueError(f'{name!r} is relative to a server, but this client has none: pass the '
                         "URL of one, as in Client('http://127.0.0.1:8080'), set the environment "
                         'variable HCY_SERVER, or use the full URL of the function, which begins '
                         'with http:// or https://')
    return f'{server}/{name.lstrip("/")}'.encode()


def public(url: Union[str, bytes]) -> str:
    """The URL without a user name and password."""
    text = url if isinstance(url, str) else url.decode(errors='backslashreplace')
    return _USER.sub('', text, count=1)
