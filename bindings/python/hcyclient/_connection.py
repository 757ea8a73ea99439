# SPDX-License-Identifier: Apache-2.0
"""A context of the library. It is destroyed once, and only by the process that created it."""
from __future__ import annotations

import os
from ctypes import byref, c_void_p
from typing import Any, Mapping

from . import _runtime
from .errors import Error


class Connection:
    """For one thread at a time. The settings have the names of the setters in the library's table,
    and the types that those take."""

    def __init__(self, settings: Mapping[str, Any]) -> None:
        self.process = os.getpid()
        self.context = c_void_p()
        self.runtime = _runtime.acquire()
        try:
            self._create(settings)
        except BaseException:
            _runtime.release()
            raise
        self.feval = self.runtime.feval

    def _create(self, settings: Mapping[str, Any]) -> None:
        runtime, config = self.runtime, c_void_p()
        try:
            if runtime.create_config(byref(config)):
                raise Error('not enough memory for the configuration of a client')
            for name, setting in settings.items():
                getattr(runtime, 'set_' + name)(config, setting)
            if runtime.create_context(byref(self.context), config):
                raise Error('not enough memory for a connection, or libcurl returned no handle')
        except BaseException:
            if self.context:
                runtime.destroy_context(self.context)
            raise
        finally:
            if config:
                runtime.destroy_config(config)

    def end(self) -> None:
        """Destroy the context, unless that has been done. A process that inherited the connection
        leaves it alone: ending the TLS session would end it for the parent too."""
        if self.context and self.process == os.getpid():
            context, self.context = self.context, c_void_p()
            self.runtime.destroy_context(context)
            _runtime.release()
