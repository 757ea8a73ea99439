# SPDX-License-Identifier: Apache-2.0
"""What a call can fail with. No message and no `url` holds a user's name or password."""
from __future__ import annotations

import builtins
from typing import NamedTuple


class Error(Exception):
    """The base of all that goes wrong between the library and a server."""


class HttpError(Error):
    """The server answered with an HTTP status other than 200.

    Attributes
    ----------
    status : int
    reason : str
        What follows the status in the reply; may be empty.
    url : str
    """

    def __init__(self, status: int, reason: str, url: str = '') -> None:
        super().__init__(status, reason, url)
        self.status = status
        self.reason = reason
        self.url = url

    def __str__(self) -> str:
        return _after(self.url, f'HTTP status {self.status} {self.reason}'.rstrip())


class StackFrame(NamedTuple):
    """Where an error was raised on the server; a text is empty and the line 0 where absent."""

    file: str
    name: str
    line: int


class FunctionError(Error):
    """The function ran on the server and raised an error.

    Attributes
    ----------
    message, identifier : str
        As the function gave them; each may be empty.
    stack : tuple of StackFrame
        In the server's order.
    url : str
    """

    def __init__(self, message: str, identifier: str = '', stack: tuple[StackFrame, ...] = (),
                 url: str = '') -> None:
        super().__init__(message, identifier, stack, url)
        self.message = message
        self.identifier = identifier
        self.stack = stack
        self.url = url

    def __str__(self) -> str:
        return f'{self.identifier}: {self.message}' if self.identifier else self.message


class TransportError(Error):
    """The call failed otherwise, as the text says: transport, memory, another number of outputs, or
    a reply that makes no sense. The classes derived from it tell the commonest cases.

    Attributes
    ----------
    text : str
        What went wrong. Texts of libcurl depend on its version.
    url : str
    """

    def __init__(self, text: str, url: str = '') -> None:
        # Not that of OSError, from which some are derived: it would take these for other things.
        Exception.__init__(self, text, url)
        self.text = text
        self.url = url

    def __str__(self) -> str:
        return _after(self.url, self.text)


class TimeoutError(TransportError, builtins.TimeoutError):
    """The call took longer than `timeout` allows."""


class ConnectionError(TransportError, builtins.ConnectionError):
    """The server, or a proxy, could not be reached, or the connection broke. A call that broke off
    may have run."""


class CertificateError(TransportError):
    """A certificate, key or revocation list was not accepted, on either side."""


class ReplyTooLarge(TransportError):
    """The reply is larger than `response_size_limit` allows, or than memory does."""


class IncompleteReply(TransportError):
    """The call succeeded, but one of its outputs, or an array in one, did not arrive whole. The
    text says which, and how many elements its dimensions name. No output is returned: the limit on
    the size of replies, `response_size_limit`, may have cut the reply, or the server sent it so."""


def _after(url: str, text: str) -> str:
    return f'{url}: {text}' if url else text
