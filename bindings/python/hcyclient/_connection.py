# SPDX-License-Identifier: Apache-2.0
"""A context of the library, which ends once, and only in the process that made it."""
from __future__ import annotations

import os
from ctypes import byref, c_void_p
from typing import Any, Mapping

from . import _runtime
from .errors import Error


class Connection:
    """One thread uses it at a time. The settings are named as in the library's table, and are of
    the types of its setters."""

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
                raise Error('there is no memory for a configuration')
            for name, setting in settings.items():
                getattr(runtime, 'set_' + name)(config, setting)
            if runtime.create_context(byref(self.context), config):
                raise Error('there is no memory or no transfer handle for a context')
        except BaseException:
            if self.context:
                runtime.destroy_context(self.context)
            raise
        finally:
            if config:
                runtime.destroy_config(config)

    def end(self) -> None:
        """Does nothing the second time, nor in a process that inherited the connection, whose TLS
        session would end for the other process too."""
        if self.context and self.process == os.getpid():
            context, self.context = self.context, c_void_p()
            self.runtime.destroy_context(context)
            _runtime.release()
