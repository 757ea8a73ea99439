# SPDX-License-Identifier: Apache-2.0
"""A context of the library, which ends once, and only in the process that made it."""
from __future__ import annotations

import os
from ctypes import byref, c_void_p
from typing import Any, Mapping, Optional

from . import _runtime
from .errors import Error


class Connection:
    """The settings are named as in the table, and of the types of its setters."""

    def __init__(self, settings: Mapping[str, Any]) -> None:
        self.process = os.getpid()
        self.context = c_void_p()
        # Holds whoever uses the context, under the key None.
        self.turns: dict[None, object] = {}
        self.runtime = _runtime.acquire()
        try:
            self._create(settings)
        except BaseException:
            _runtime.release()
            raise

    def _create(self, settings: Mapping[str, Any]) -> None:
        runtime, config = self.runtime, c_void_p()
        try:
            if runtime.create_config(byref(config)):
                raise Error('memory for a configuration cannot be had')
            for name, setting in settings.items():
                getattr(runtime, 'set_' + name)(config, setting)
            if runtime.create_context(byref(self.context), config):
                raise Error('memory or a transfer handle for a context cannot be had')
        except BaseException:
            if self.context:
                runtime.destroy_context(self.context)
            raise
        finally:
            if config:
                runtime.destroy_config(config)

    def end(self, turn: Optional[object] = None) -> None:
        """Does nothing the second time. Nor in a process that inherited the connection, whose TLS
        session would end for the other one too. Nor while somebody else has his turn: a call may
        go on in another thread when the interpreter ends."""
        if self.turns.get(None, turn) is not turn or self.process != os.getpid():
            return
        if self.context:
            context, self.context = self.context, c_void_p()
            self.runtime.destroy_context(context)
            _runtime.release()
