# SPDX-License-Identifier: Apache-2.0
"""Exceptions of calls. No message and no attribute `url` contains a user name or a password."""
from __future__ import annotations

import builtins
from typing import NamedTuple


class Error(Exception):
    """The base class of all errors of the library and of calls."""


class HttpError(Error):
    """The server answered with an HTTP status other than 200.

    Attributes
    ----------
    status : int
    reason : str
        The text after the status in the reply; may be empty.
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
    """Where an error was raised on the server. A missing string is empty, a missing line is 0.

    Attributes
    ----------
    file, name : str
        The file and the function.
    line : int
    """

    file: str
    name: str
    line: int


class FunctionError(Error):
    """The function ran on the server and raised an error.

    Attributes
    ----------
    message, identifier : str
        As set by the function; each may be empty.
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
    """The call failed for another reason, such as the transport, memory, the number of outputs, or
    a reply that is not valid. The most common cases have their own subclasses.

    Attributes
    ----------
    text : str
        What went wrong. The messages of libcurl depend on its version.
    url : str
    """

    def __init__(self, text: str, url: str = '') -> None:
        # Not OSError's, although some subclasses derive from it: it interprets two arguments.
        Exception.__init__(self, text, url)
        self.text = text
        self.url = url

    def __str__(self) -> str:
        return _after(self.url, self.text)


class TimeoutError(TransportError, builtins.TimeoutError):
    """The call took longer than `timeout` allows."""


class ConnectionError(TransportError, builtins.ConnectionError):
    """The server or a proxy could not be reached, or the connection broke. In the latter case the
    function may have run."""


class CertificateError(TransportError):
    """The client or the server did not accept a certificate, key or revocation list."""


class ReplyTooLarge(TransportError):
    """The reply is larger than `response_size_limit`, or than the available memory."""


class IncompleteReply(TransportError):
    """The call succeeded, but an output, or an array in an output, is not complete. The message
    says which one, and how many elements its dimensions announce. The reply may have been truncated
    at `response_size_limit`, or the server sent it like this. No outputs are returned."""


def _after(url: str, text: str) -> str:
    return f'{url}: {text}' if url else text
