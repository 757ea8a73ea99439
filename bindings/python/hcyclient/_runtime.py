# SPDX-License-Identifier: Apache-2.0
"""The library's table of functions. The library starts with the first client and is shut down after
the last one."""
from __future__ import annotations

import os
import threading
from ctypes import CFUNCTYPE, POINTER, PYFUNCTYPE, Structure, c_bool, c_char_p, c_int, c_int32
from ctypes import c_uint32, c_void_p
from typing import Any, Optional

from . import _library as library
from .errors import Error


def _setting(kind: Any) -> list[Any]:
    """The prototypes of a setter and a getter."""
    return [PYFUNCTYPE(None, c_void_p, kind), PYFUNCTYPE(kind, c_void_p)]


# The functions that wait for the network release the interpreter's lock.
_SLOTS = dict(zip(
    ('create_config destroy_config set_timeout get_timeout set_size_limit get_size_limit '
     'create_context destroy_context get_error destroy_error feval set_cert_file get_cert_file '
     'set_key_file get_key_file set_passphrase get_passphrase set_ca_file get_ca_file '
     'set_revocation_file get_revocation_file set_verify_hostname get_verify_hostname '
     'set_verify_peer get_verify_peer').split(),
    [PYFUNCTYPE(c_int, POINTER(c_void_p)), PYFUNCTYPE(None, c_void_p),
     *_setting(c_uint32), *_setting(c_uint32),
     PYFUNCTYPE(c_int, POINTER(c_void_p), c_void_p), CFUNCTYPE(None, c_void_p),
     PYFUNCTYPE(None, c_void_p, c_void_p), PYFUNCTYPE(None, c_void_p),
     CFUNCTYPE(c_int, c_void_p, c_char_p, c_int32, c_void_p, c_int32, c_void_p),
     *_setting(c_char_p), *_setting(c_char_p), *_setting(c_char_p), *_setting(c_char_p),
     *_setting(c_char_p), *_setting(c_bool), *_setting(c_bool)]))


class _Table(Structure):
    """hcyClientRuntime: 25 slots, whose order never changes."""

    _fields_ = [(name, prototype) for name, prototype in _SLOTS.items()]


class Runtime:
    """The functions of the table, looked up once."""

    __slots__ = tuple(_SLOTS)

    def __init__(self, table: _Table) -> None:
        for name in _SLOTS:
            setattr(self, name, getattr(table, name))

    def __getattr__(self, name: str) -> Any:  # tells the type checker that the names are dynamic
        raise AttributeError(name)


# Reentrant: the garbage collector may close a client while another one is created.
_lock = threading.RLock()
_users = 0
_runtime: Optional[Runtime] = None


def _start() -> Runtime:
    address = library.initialize(library.VERSION_1_1)
    if not address:
        raise Error((library.initialization_error() or b'').decode(errors='backslashreplace'))
    table = _Table.from_address(address)
    if not table.set_verify_peer:
        raise Error('other code in this process has started the library for interface version 1.0')
    return Runtime(table)


def acquire() -> Runtime:
    """The runtime for one more user, which must call release() when it no longer needs it."""
    global _users, _runtime
    with _lock:
        _users += 1  # first, so that nobody shuts it down from here on
        if _runtime is None:
            try:
                _runtime = _start()
            except BaseException:
                _users -= 1
                raise
        return _runtime


def release() -> None:
    global _users, _runtime
    with _lock:
        _users -= 1
        if _users == 0:
            _runtime = None
            library.terminate()


def _renew_lock() -> None:
    global _lock
    _lock = threading.RLock()


os.register_at_fork(after_in_child=_renew_lock)
