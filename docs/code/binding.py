#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""A small binding for Python, with nothing but ctypes. Usage: binding.py SERVER_URL"""
import ctypes
import sys
from ctypes import CFUNCTYPE, POINTER, PYFUNCTYPE, byref, c_char_p, c_double, c_int, c_int32
from ctypes import c_size_t, c_uint32, c_void_p, sizeof

# Functions of a PyDLL keep the interpreter's lock while they run, and those of a CDLL do not.
library = ctypes.PyDLL('build/release/src/libhcyclient.so.1')


def function(name, result, *arguments):
    found = getattr(library, name)
    found.restype, found.argtypes = result, arguments
    return found


def method(function):
    """Makes the interpreter call the function with the object, and no code of Python between."""
    make = ctypes.pythonapi.PyInstanceMethod_New
    make.restype, make.argtypes = ctypes.py_object, [ctypes.py_object]
    return make(function)


class Array(c_void_p):
    """A handle: a pointer that is an object, whose finalizer is a function of the library."""
    __del__ = method(function('hcyDestroyArray', None, c_void_p))


create_matrix = function('hcyCreateDoubleMatrix', Array, c_size_t, c_size_t, c_int32)
set_dimensions = function('hcySetDimensions', c_int, c_void_p, POINTER(c_size_t), c_size_t)
get_dimension_count = function('hcyGetNumberOfDimensions', c_size_t, c_void_p)
get_count = function('hcyGetNumberOfElements', c_size_t, c_void_p)
get_real = function('hcyGetPr', c_void_p, c_void_p)
initialize = function('hcyInitializeEx', c_void_p, c_int)
init_message = function('hcyGetInitializationErrorMessage', c_char_p)
terminate = function('hcyTerminate', None)


def array_of(values):
    """A column."""
    array = create_matrix(1, 1, 0)
    if set_dimensions(array, (c_size_t * 2)(len(values), 1), 2):
        raise MemoryError
    ctypes.memmove(get_real(array), (c_double * len(values))(*values), 8 * len(values))
    return array


def view_of(array):
    """The real parts of a double array of a reply, in place."""
    count = get_count(array)
    if count == 0 and get_dimension_count(array) > 0:
        return []
    # Null unless all elements have arrived; null for another class, too.
    address = get_real(array)
    if not address:
        raise CallFailed(f'the output is not a whole array of {count} doubles')
    elements = (c_double * count).from_address(address)
    elements.array = array  # keeps the array alive as long as the view
    return elements


class Runtime(ctypes.Structure):
    """The slots of version 1.0, in the order of the header; those of 1.1 follow."""
    _fields_ = [
        ('create_config', PYFUNCTYPE(c_int, POINTER(c_void_p))),
        ('destroy_config', PYFUNCTYPE(None, c_void_p)),
        ('set_time_out', PYFUNCTYPE(None, c_void_p, c_uint32)),
        ('get_time_out', PYFUNCTYPE(c_uint32, c_void_p)),
        ('set_response_size_limit', PYFUNCTYPE(None, c_void_p, c_uint32)),
        ('get_response_size_limit', PYFUNCTYPE(c_uint32, c_void_p)),
        ('create_context', PYFUNCTYPE(c_int, POINTER(c_void_p), c_void_p)),
        ('destroy_context', CFUNCTYPE(None, c_void_p)),
        ('get_last_error_info', PYFUNCTYPE(None, c_void_p, c_void_p)),
        ('destroy_last_error_info', PYFUNCTYPE(None, c_void_p)),
        # Waits for the network: it releases the interpreter's lock.
        ('feval', CFUNCTYPE(c_int, c_void_p, c_char_p, c_int32, c_void_p, c_int32, c_void_p)),
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


class CallFailed(Exception):
    pass


def text(found):
    """Texts are the server's, byte for byte."""
    return found.decode(errors='backslashreplace')


class Client:
    def __init__(self):
        table = initialize(0x10000)
        if not table:
            raise CallFailed(text(init_message()))
        self.runtime = Runtime.from_address(table)
        config, self.context = c_void_p(), c_void_p()
        if self.runtime.create_config(byref(config)):
            raise MemoryError
        failed = self.runtime.create_context(byref(self.context), config)
        self.runtime.destroy_config(config)
        if failed:
            raise MemoryError

    def close(self):
        self.runtime.destroy_context(self.context)
        terminate()

    def call(self, url, inputs, nargout=1):
        room = (c_void_p * nargout)()  # null
        outputs = [Array.from_buffer(room, i * sizeof(c_void_p)) for i in range(nargout)]
        handles = (c_void_p * len(inputs))(*(array.value for array in inputs))
        if self.runtime.feval(self.context, url.encode(), nargout, room, len(inputs), handles):
            raise self.failure()
        return outputs

    def failure(self):
        info = ErrorInfo()
        try:
            self.runtime.get_last_error_info(self.context, byref(info))
            if info.kind == 0:
                http = info.details.http
                return CallFailed(f'{http.status} {text(http.reason).strip()}')
            if info.kind == 1:
                vorten = info.details.vorten
                return CallFailed(f'{text(vorten.identifier)} {text(vorten.message)}')
            return CallFailed(text(info.details.generic))
        finally:
            self.runtime.destroy_last_error_info(byref(info))


client = Client()
server = sys.argv[1]
[total] = client.call(server + '/math/plus', [array_of([1.0, 2.0]), array_of([10.0])])
elements = view_of(total)
del total
print(list(elements))
for name in ['math/minus', 'math/plus']:
    try:
        client.call(f'{server}/{name}', [])
    except CallFailed as failure:
        print(str(failure).split()[0])
client.close()
