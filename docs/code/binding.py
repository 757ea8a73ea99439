#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""A small binding for Python, with nothing but ctypes. Usage: binding.py SERVER_URL"""
import ctypes
import sys
from ctypes import POINTER, byref, c_char_p, c_double, c_int, c_int32, c_size_t
from ctypes import c_uint32, c_void_p

library = ctypes.CDLL('build/release/src/libhcyclient.so.1')


def function(name, result, *arguments):
    found = getattr(library, name)
    found.restype, found.argtypes = result, arguments
    return found


create_matrix = function('hcyCreateDoubleMatrix', c_void_p, c_size_t, c_size_t, c_int32)
destroy_array = function('hcyDestroyArray', None, c_void_p)
get_real = function('hcyGetPr', POINTER(c_double), c_void_p)
get_count = function('hcyGetNumberOfElements', c_size_t, c_void_p)
initialize = function('hcyInitializeEx', c_void_p, c_int)
init_message = function('hcyGetInitializationErrorMessage', c_char_p)
terminate = function('hcyTerminate', None)

slot = ctypes.CFUNCTYPE


class Runtime(ctypes.Structure):
    """The slots of version 1.0, in the order of the header; those of 1.1 follow."""
    _fields_ = [
        ('create_config', slot(c_int, POINTER(c_void_p))),
        ('destroy_config', slot(None, c_void_p)),
        ('set_time_out', slot(None, c_void_p, c_uint32)),
        ('get_time_out', slot(c_uint32, c_void_p)),
        ('set_response_size_limit', slot(None, c_void_p, c_uint32)),
        ('get_response_size_limit', slot(c_uint32, c_void_p)),
        ('create_context', slot(c_int, POINTER(c_void_p), c_void_p)),
        ('destroy_context', slot(None, c_void_p)),
        ('get_last_error_info', slot(None, c_void_p, c_void_p)),
        ('destroy_last_error_info', slot(None, c_void_p)),
        ('feval', slot(c_int, c_void_p, c_char_p, c_int32, POINTER(c_void_p), c_int32,
                       POINTER(c_void_p))),
    ]


class Http(ctypes.Structure):
    _fields_ = [('status', c_uint32), ('reason', c_char_p)]


class Vorten(ctypes.Structure):
    _fields_ = [('message', c_char_p), ('identifier', c_char_p), ('stack', c_void_p),
                ('depth', c_size_t)]


class Details(ctypes.Union):
    _fields_ = [('http', Http), ('vorten', Vorten), ('generic', c_char_p)]


class ErrorInfo(ctypes.Structure):
    _fields_ = [('kind', c_int32), ('message', c_char_p), ('details', Details)]


class Array:
    """Owns a handle, which the collector of garbage returns."""

    def __init__(self, handle):
        self.handle = handle

    def __del__(self):
        destroy_array(self.handle)

    @classmethod
    def of(cls, values):
        array = cls(create_matrix(len(values), 1, 0))
        ctypes.memmove(get_real(array.handle), (c_double * len(values))(*values), 8 * len(values))
        return array

    def values(self):
        elements = get_real(self.handle)  # null for another class, and when there are none
        return elements[:get_count(self.handle)] if elements else []


class CallFailed(Exception):
    pass


class Client:
    def __init__(self):
        table = initialize(0x10000)
        if not table:
            raise RuntimeError(init_message().decode())
        self.runtime = Runtime.from_address(table)
        config, self.context = c_void_p(), c_void_p()
        if self.runtime.create_config(byref(config)) != 0:
            raise MemoryError
        failed = self.runtime.create_context(byref(self.context), config)
        self.runtime.destroy_config(config)
        if failed:
            raise MemoryError

    def close(self):
        self.runtime.destroy_context(self.context)
        terminate()

    def call(self, url, inputs, nargout=1):
        outputs = (c_void_p * nargout)()
        handles = (c_void_p * len(inputs))(*(array.handle for array in inputs))
        failed = self.runtime.feval(self.context, url.encode(), nargout, outputs, len(inputs),
                                    handles)
        arrays = [Array(handle) for handle in outputs]  # those of a failed call go at once
        if failed:
            raise self.failure()
        return arrays

    def failure(self):
        info = ErrorInfo()
        self.runtime.get_last_error_info(self.context, byref(info))
        if info.kind == 0:
            text = f'{info.details.http.status} {info.details.http.reason.decode().strip()}'
        elif info.kind == 1:
            text = f'{info.details.vorten.identifier.decode()} {info.details.vorten.message.decode()}'
        else:
            text = info.details.generic.decode()
        self.runtime.destroy_last_error_info(byref(info))
        return CallFailed(text)


client = Client()
server = sys.argv[1]
print(client.call(server + '/math/plus', [Array.of([1.0, 2.0]), Array.of([10.0])])[0].values())
for name in ['math/minus', 'math/plus']:
    try:
        client.call(f'{server}/{name}', [])
    except CallFailed as failure:
        print(str(failure).split()[0])
client.close()
