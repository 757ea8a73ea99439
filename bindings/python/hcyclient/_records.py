# SPDX-License-Identifier: Apache-2.0
"""The library's record of why a call failed."""
from __future__ import annotations

from ctypes import POINTER, Structure, Union, byref, c_char_p, c_int32, c_size_t, c_uint32, c_void_p
from typing import Optional

from ._runtime import Runtime
from ._transport_errors import transport_error
from .errors import Error, FunctionError, HttpError, StackFrame

HTTP_ERROR, VORTEN_ERROR = 0, 1


class _Frame(Structure):
    _fields_ = [('file', c_char_p), ('name', c_char_p), ('line', c_int32)]


class _Http(Structure):
    _fields_ = [('status', c_uint32), ('reason', c_char_p)]


class _Vorten(Structure):
    _fields_ = [('message', c_char_p), ('identifier', c_char_p), ('stack', POINTER(_Frame)),
                ('depth', c_size_t)]


class _Generic(Structure):
    _fields_ = [('text', c_char_p)]


class _Details(Union):
    _fields_ = [('http', _Http), ('vorten', _Vorten), ('generic', _Generic)]


class _ErrorInfo(Structure):
    _fields_ = [('kind', c_int32), ('message', c_char_p), ('details', _Details)]


def _text(found: Optional[bytes]) -> str:
    """Decode a string that comes from the server, and may hold any bytes."""
    return (found or b'').decode(errors='backslashreplace')


def _exception(info: _ErrorInfo, url: str) -> Error:
    if info.kind == HTTP_ERROR:
        http = info.details.http
        return HttpError(http.status, _text(http.reason).strip(), url)
    if info.kind == VORTEN_ERROR:
        vorten = info.details.vorten
        frames = vorten.stack[:vorten.depth] if vorten.stack else []
        return FunctionError(_text(vorten.message), _text(vorten.identifier), tuple(
            StackFrame(_text(frame.file), _text(frame.name), frame.line) for frame in frames), url)
    return transport_error(_text(info.details.generic.text), url)


def last_failure(runtime: Runtime, context: c_void_p, url: str) -> Error:
    """The exception for the last failed call of the context, which was to this URL."""
    info = _ErrorInfo()
    try:
        runtime.get_error(context, byref(info))
        return _exception(info, url)
    finally:
        runtime.destroy_error(byref(info))
