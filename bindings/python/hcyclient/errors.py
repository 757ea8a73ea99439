# SPDX-License-Identifier: Apache-2.0
"""What a call can fail with."""
from __future__ import annotations

from typing import NamedTuple


class Error(Exception):
    """The base of all that goes wrong between the library and a server."""


class HttpError(Error):
    """The server answered with an HTTP status other than 200."""

    def __init__(self, status: int, reason: str) -> None:
        super().__init__(status, reason)
        self.status = status
        self.reason = reason

    def __str__(self) -> str:
        return f'HTTP status {self.status} {self.reason}'.rstrip()


class StackFrame(NamedTuple):
    """Where an error was raised on the server; a text is empty and the line 0 where absent."""

    file: str
    name: str
    line: int


class FunctionError(Error):
    """The function ran on the server and raised an error. The stack is in the server's order."""

    def __init__(self, message: str, identifier: str = '',
                 stack: tuple[StackFrame, ...] = ()) -> None:
        super().__init__(message, identifier, stack)
        self.message = message
        self.identifier = identifier
        self.stack = stack

    def __str__(self) -> str:
        return f'{self.identifier}: {self.message}' if self.identifier else self.message


class TransportError(Error):
    """The call failed otherwise, as the text says: transport, time-out, size limit, memory, another
    number of outputs, or a reply that makes no sense."""

    def __init__(self, text: str) -> None:
        super().__init__(text)
        self.text = text


class IncompleteReply(TransportError):
    """The call succeeded, but one of its outputs, or an array in one, did not arrive whole. The
    text says which, and how many elements its dimensions name. No output is returned: the limit on
    the size of replies, response_size_limit, may have cut the reply, or the server sent it so."""
