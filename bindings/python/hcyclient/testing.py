# SPDX-License-Identifier: Apache-2.0
"""A server for tests: Python functions, and calls recorded from another server.

    import hcyclient, hcyclient.testing

    with hcyclient.testing.Server({'my/scale': lambda a, k: a * k}) as server:
        with hcyclient.Client() as client:
            client.feval(server.url('my/scale'), [1, 2], 3)

The server is the program hcy-local-server. It runs as a separate process, which ends with this one.
The functions run in this process.
"""
from __future__ import annotations

import os
import re
import secrets
import shutil
import subprocess
import threading
import traceback
from collections.abc import Mapping, Sequence
from types import TracebackType
from typing import Any, Callable, NamedTuple, Optional, Union

import numpy as np

from ._client import Client
from ._values import Cell
from .errors import Error, FunctionError, StackFrame

__all__ = ['Call', 'Server']

_LARGEST_REPLY = 0xFFFFFFFF
_PATIENCE = 10.0  # seconds
_BEFORE_OUTPUTS = 2  # arguments of a worker's call: the ticket and the kind of the answer

Path = Union[str, 'os.PathLike[str]']


class Call(NamedTuple):
    """A call to a Python function of a Server.

    Attributes
    ----------
    function : str
        The name of the function.
    arguments : tuple
        The arguments, of the types that feval() returns.
    nargout : int
        The number of outputs that the caller asked for.
    """

    function: str
    arguments: tuple[Any, ...]
    nargout: int


class Server:
    """A server on this machine. It runs until close(), or the end of a with statement.

    Without `functions`, `record`, `replay` and `upstream`, it has the functions of
    hcy-local-server.

    Parameters
    ----------
    functions : mapping of str to callable, optional
        The functions by name. Their arguments have the types that feval() returns. They return one
        output or a tuple of outputs, of the types that feval() accepts. An exception is raised in
        the client as a FunctionError with the Python stack.
    threads : int
        How many functions may run at once, each on its own thread; at least 1. A function that
        calls another function of the same server needs 2.
    record : path, optional
        The folder in which to record the calls that are passed on to `upstream`.
    replay : path, optional
        A folder of recorded calls to replay.
    upstream : str, optional
        The URL of another server.
    options : sequence of str
        Further options for hcy-local-server, such as ``['--fault', 'my/*=503@2']``.
    program : path, optional
        The path of hcy-local-server. The default is the path in the environment variable
        ``HCY_LOCAL_SERVER``, or else the program on the search path.

    Attributes
    ----------
    calls : list of Call
        The calls to the functions, in the order in which they started.

    Raises
    ------
    FileNotFoundError
        If the program is not installed.
    RuntimeError
        If the server does not start; its standard error says why.
    ValueError
        If `threads` is less than 1, or a name is empty or contains an equals sign.
    """

    calls: list[Call]

    def __init__(self, functions: Optional[Mapping[str, Callable[..., Any]]] = None, *,
                 threads: int = 1, record: Optional[Path] = None, replay: Optional[Path] = None,
                 upstream: Optional[str] = None, options: Sequence[str] = (),
                 program: Optional[Path] = None) -> None:
        if threads < 1:
            raise ValueError('threads must be at least 1')
        for name in functions or {}:
            if not name.strip('/') or '=' in name:
                raise ValueError(f'not a valid function name: {name!r}')
        self.calls = []
        self._functions = {name.lstrip('/'): function
                           for name, function in (functions or {}).items()}
        self._threads: list[threading.Thread] = []
        self._is_closing = False
        # Anyone who knows this name can answer calls of the functions, so it cannot be guessed.
        worker_path = 'worker-' + secrets.token_urlsafe(16)
        command = [_file_of(program), '--port', '0', '--stop-on-eof']
        for option, value in (('--record', record), ('--replay', replay), ('--upstream', upstream)):
            if value is not None:
                command += [option, os.fspath(value)]
        if self._functions:
            # Long enough to step through a function in a debugger.
            command += ['--worker-path', worker_path, '--function-timeout', '86400']
        for name in self._functions:
            command += ['--function', name + '=@']
        command += options
        self._process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                         text=True)
        assert self._process.stdout is not None
        words = self._process.stdout.readline().split()
        if len(words) != 3:
            self.close()
            raise RuntimeError(f'{command[0]} did not start: exit status '
                               f'{self._process.returncode}')
        self._url = words[2]
        for _ in range(threads if self._functions else 0):
            thread = threading.Thread(target=self._work, args=(self.url(worker_path),), daemon=True)
            thread.start()
            self._threads.append(thread)

    def url(self, function: str = '') -> str:
        """Return the URL of a function, or of the server if no function is named."""
        return f'{self._url}/{function.lstrip("/")}' if function else self._url

    def close(self) -> None:
        """Stop the server. Calls in progress fail. Closing a closed server does nothing."""
        self._is_closing = True
        assert self._process.stdin is not None and self._process.stdout is not None
        self._process.stdin.close()
        try:
            self._process.wait(_PATIENCE)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.wait()
        self._process.stdout.close()
        for thread in self._threads:
            # A function that does not return cannot be stopped.
            thread.join(_PATIENCE)

    def __enter__(self) -> Server:
        return self

    def __exit__(self, kind: Optional[type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        self.close()

    def _work(self, url: str) -> None:
        """Send the outputs of a function, and get the next call."""
        with Client(timeout=None, response_size_limit=_LARGEST_REPLY) as client:
            answer: list[Any] = [0.0]
            name = ''
            while not self._is_closing:
                try:
                    call = client.feval(url, *answer)
                except (TypeError, ValueError, OverflowError) as error:
                    # The outputs of the function cannot be converted. Nothing has been sent.
                    if answer[1:2] != ['outputs']:
                        raise
                    answer = [answer[0], *_unusable_output(error, name)]
                    continue
                except Error:
                    if self._process.poll() is not None or self._is_closing:
                        return
                    # The answer is lost, but the thread goes on.
                    answer = [0.0]
                    continue
                if not call:  # there was no call for a while
                    answer = [0.0]
                    continue
                ticket, name, nargout, *arguments = call
                answer = [_number(ticket), *self._answer(name, int(_number(nargout)), arguments)]
                del arguments, call

    def _answer(self, name: str, nargout: int, arguments: list[Any]) -> list[Any]:
        self.calls.append(Call(name, tuple(arguments), nargout))
        try:
            outputs = self._functions[name](*arguments)
        except BaseException as error:  # pylint: disable=broad-except
            # pytest.fail() and sys.exit() do not raise an Exception. The caller waits nevertheless.
            return _error(error)
        if isinstance(outputs, tuple):
            return ['outputs', *outputs[:nargout]]
        return ['outputs', outputs] if nargout else ['outputs']


def _number(value: Any) -> float:
    return float(np.asarray(value).flat[0])


def _error(error: BaseException) -> list[Any]:
    """The answer that sends an exception."""
    if isinstance(error, FunctionError):
        frames = error.stack or _frames(error)
        return _described(error.identifier, error.message, frames)
    name = type(error).__name__
    return _described('python:' + name, str(error) or name, _frames(error))


def _unusable_output(error: Exception, function: str) -> list[Any]:
    """The answer that reports an output that cannot be converted. The message calls it an argument,
    because outputs are arguments of the worker's call."""
    message = re.sub(r'^argument (\d+)',
                     lambda match: f'output {int(match[1]) - _BEFORE_OUTPUTS} of {function}',
                     str(error))
    return _described('python:' + type(error).__name__, message, _frames(error))


def _described(identifier: str, message: str, stack: Sequence[StackFrame]) -> list[Any]:
    parts: Cell[Any] = Cell()
    for frame in stack:
        parts += [_text(frame.file), _text(frame.name), float(frame.line)]
    return ['error', _text(identifier), _text(message), parts]


def _text(text: str) -> str:
    """Replace characters that UTF-8 cannot encode."""
    return text.encode(errors='replace').decode()


def _frames(error: BaseException) -> list[StackFrame]:
    """The Python stack, innermost frame first, without this module."""
    found = traceback.extract_tb(error.__traceback__)
    frames = [StackFrame(frame.filename, frame.name, frame.lineno or 0) for frame in found
              if frame.filename != __file__]
    return frames[::-1]


def _file_of(program: Optional[Path]) -> str:
    name = os.fspath(program or os.environ.get('HCY_LOCAL_SERVER') or 'hcy-local-server')
    found = shutil.which(name)
    if found is None:
        raise FileNotFoundError(
            f'cannot find {name}: install the tools of hcyclient, or set the environment variable '
            'HCY_LOCAL_SERVER to its path')
    return found
