# SPDX-License-Identifier: Apache-2.0
"""A server for tests: functions of Python, and calls recorded from another server.

    import hcyclient, hcyclient.testing

    with hcyclient.testing.Server({'my/scale': lambda a, k: a * k}) as server:
        with hcyclient.Client() as client:
            client.feval(server.url('my/scale'), [1, 2], 3)

The server is the program hcy-local-server, a process of its own, which ends with this one. The
functions run in this process.
"""
from __future__ import annotations

import os
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

Path = Union[str, 'os.PathLike[str]']


class Call(NamedTuple):
    """A call that a function of Python got."""

    function: str
    arguments: tuple[Any, ...]
    nargout: int


class Server:
    """A server on this machine, from its making until close(), or the end of a with statement.

    functions   by name, callables that get the arguments as feval() would return them, and return
                what feval() would take: one output, or a tuple of them. An exception is raised in
                the client as a FunctionError with the stack of Python.
    threads     how many functions run at a time, each on a thread of its own
    record      a folder that keeps the calls that are passed on to `upstream`
    replay      a folder of such calls, which are answered from it
    upstream    the URL of another server
    options     more options of hcy-local-server, such as ['--fault', 'my/*=503@2']
    program     its file; that of the environment variable HCY_LOCAL_SERVER, or on the PATH,
                otherwise

    Without functions, record, replay and upstream, it has the functions of hcy-local-server.

    Raises FileNotFoundError if the program is not installed, RuntimeError if it does not start (its
    standard error says why), and ValueError for a number of threads below 1, or a name that is
    empty or has an equals sign inside.
    """

    calls: list[Call]
    """What the functions were called with, in the order in which they began."""

    def __init__(self, functions: Optional[Mapping[str, Callable[..., Any]]] = None, *,
                 threads: int = 1, record: Optional[Path] = None, replay: Optional[Path] = None,
                 upstream: Optional[str] = None, options: Sequence[str] = (),
                 program: Optional[Path] = None) -> None:
        if threads < 1:
            raise ValueError('a server has one thread at least')
        for name in functions or {}:
            if not name.strip('/') or '=' in name:
                raise ValueError(f'this is not the name of a function: {name!r}')
        self.calls = []
        self._functions = {name.lstrip('/'): function
                           for name, function in (functions or {}).items()}
        self._threads: list[threading.Thread] = []
        self._is_closing = False
        # A name that nobody guesses: who calls it answers for the functions.
        worker_path = 'worker-' + secrets.token_urlsafe(16)
        command = [_file_of(program), '--port', '0', '--stop-on-eof']
        for option, value in (('--record', record), ('--replay', replay), ('--upstream', upstream)):
            if value is not None:
                command += [option, os.fspath(value)]
        if self._functions:
            # A function may be looked into with a debugger meanwhile.
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
            raise RuntimeError(f'{command[0]} does not start: exit status '
                               f'{self._process.returncode}')
        self._url = words[2]
        for _ in range(threads if self._functions else 0):
            thread = threading.Thread(target=self._work, args=(self.url(worker_path),), daemon=True)
            thread.start()
            self._threads.append(thread)

    def url(self, function: str = '') -> str:
        """The URL of a function; of the server itself without one."""
        return f'{self._url}/{function.lstrip("/")}' if function else self._url

    def close(self) -> None:
        """Ends the server. Calls that are being answered fail. Closing again does nothing."""
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
        """Hands over what a function has returned, and gets the next call."""
        with Client(timeout=None, response_size_limit=_LARGEST_REPLY) as client:
            answer: list[Any] = [0.0]
            while not self._is_closing:
                try:
                    call = client.feval(url, *answer)
                except (TypeError, ValueError, OverflowError) as error:
                    # The function has returned what no array can hold. Nothing has been sent.
                    if answer[1:2] != ['outputs']:
                        raise
                    answer = [answer[0], *_error(error)]
                    continue
                except Error:
                    if self._process.poll() is not None or self._is_closing:
                        return
                    # What was handed over is lost, the thread is not.
                    answer = [0.0]
                    continue
                if not call:  # there was none for a while
                    answer = [0.0]
                    continue
                ticket, name, nargout, *arguments = call
                answer = [_number(ticket), *self._answer(name, int(_number(nargout)), arguments)]
                del arguments, call

    def _answer(self, name: str, nargout: int, arguments: list[Any]) -> list[Any]:
        self.calls.append(Call(name, tuple(arguments), nargout))
        try:
            outputs = self._functions[name](*arguments)
        except Exception as error:  # pylint: disable=broad-except
            return _error(error)
        if isinstance(outputs, tuple):
            return ['outputs', *outputs[:nargout]]
        return ['outputs', outputs] if nargout else ['outputs']


def _number(value: Any) -> float:
    return float(np.asarray(value).flat[0])


def _error(error: Exception) -> list[Any]:
    """What stands for an exception on its way."""
    if isinstance(error, FunctionError):
        frames = error.stack or _frames(error)
        return _described(error.identifier, error.message, frames)
    name = type(error).__name__
    return _described('python:' + name, str(error) or name, _frames(error))


def _described(identifier: str, message: str, stack: Sequence[StackFrame]) -> list[Any]:
    parts: Cell[Any] = Cell()
    for frame in stack:
        parts += [_text(frame.file), _text(frame.name), float(frame.line)]
    return ['error', _text(identifier), _text(message), parts]


def _text(text: str) -> str:
    """Without what UTF-8 cannot hold."""
    return text.encode(errors='replace').decode()


def _frames(error: Exception) -> list[StackFrame]:
    """Innermost first, without those of this module."""
    found = traceback.extract_tb(error.__traceback__)
    frames = [StackFrame(frame.filename, frame.name, frame.lineno or 0) for frame in found
              if frame.filename != __file__]
    return frames[::-1]


def _file_of(program: Optional[Path]) -> str:
    name = os.fspath(program or os.environ.get('HCY_LOCAL_SERVER') or 'hcy-local-server')
    found = shutil.which(name)
    if found is None:
        raise FileNotFoundError(
            f'{name} is not found: install the tools of hcyclient, or name the program in the '
            'environment variable HCY_LOCAL_SERVER')
    return found
