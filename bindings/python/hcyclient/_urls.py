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
        raise ValueError(f'{name} has a NUL inside')
    return encoded


def server_url(server: Optional[str]) -> Optional[str]:
    """The URL of a server without a slash at its end; that of the environment if none is given."""
    name = 'the URL of a server'
    if server is None:
        server = os.environ.get('HCY_SERVER') or None
        name = 'the URL in the environment variable HCY_SERVER'
        if server is None:
            return None
    if not isinstance(server, str):
        raise TypeError(f'{name} is a str, not {type(server).__name__}')
    if not _SCHEME.match(c_text(name, server)):
        raise ValueError(f'{name} begins with http:// or https://, and this one does not')
    if '?' in server or '#' in server:
        raise ValueError(f'{name} has no query and no fragment')
    return server.rstrip('/')


def function_url(server: Optional[str], name: str) -> bytes:
    """The URL of a function, from its URL or its name on the server."""
    if not isinstance(name, str):
        raise TypeError(f'a URL is a str, not {type(name).__name__}')
    encoded = c_text('a URL', name)
    if _SCHEME.match(encoded):
        return encoded
    # The library would have libcurl read local files, too, and guess a scheme that is missing.
    if _ANY_SCHEME.match(name) or name.startswith('//') or '://' in name:
        raise ValueError('a URL begins with http:// or https://, and this one does not')
    if not name.strip('/ '):
        raise ValueError('the name of a function is empty')
    if server is None:
        raise ValueError(f'{name!r} is relative to a server, and this client has none: give the '
                         "URL of one, as in Client('http://127.0.0.1:8080') or in the environment "
                         'variable HCY_SERVER, or the whole URL of the function, which begins with '
                         'http:// or https://')
    return f'{server}/{name.lstrip("/")}'.encode()


def public(url: Union[str, bytes]) -> str:
    """The URL without a user's name and password."""
    text = url if isinstance(url, str) else url.decode(errors='backslashreplace')
    return _USER.sub('', text, count=1)
