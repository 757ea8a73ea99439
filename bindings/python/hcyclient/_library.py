# SPDX-License-Identifier: Apache-2.0
"""The shared library and the prototypes of its exported functions.

The array functions hold the interpreter's lock. They are short, and the garbage collector may
destroy a handle on any thread: the lock keeps that apart from other uses of the same array.
"""
from __future__ import annotations

import ctypes
import os
from ctypes import c_bool, c_char_p, c_double, c_int, c_int32, c_size_t, c_void_p
from typing import Any

UINT8, INT8, UINT16, INT16, UINT32, INT32, UINT64, INT64, SINGLE, DOUBLE = range(10)
LOGICAL, CHAR, STRUCT, CELL = range(10, 14)
REAL, COMPLEX = 0, 1
VERSION_1_1 = 0x10001
# The largest dimension, and the largest number of elements.
LARGEST_SIZE = 2147483647


_NAME = 'libhcyclient.so.1'
_ELSEWHERE = ("install it where the system's loader looks, or set the environment variable "
              'HCYCLIENT_LIBRARY to its path')
_WITHOUT_CURL = 'install the system package of libcurl (on Debian: apt install libcurl4)'


def _file_name() -> str:
    inside = os.path.join(os.path.dirname(__file__), _NAME)  # wheels for one platform hold it
    return os.environ.get('HCYCLIENT_LIBRARY') or (inside if os.path.exists(inside) else _NAME)


def _load() -> tuple[ctypes.PyDLL, ctypes.CDLL]:
    name = _file_name()
    try:
        return ctypes.PyDLL(name), ctypes.CDLL(name)
    except OSError as error:
        advice = _WITHOUT_CURL if str(error).startswith('libcurl.so') else _ELSEWHERE
        raise ImportError(
            f'cannot load the shared library of hcyclient: {error}; {advice}') from None


_locking, _unlocking = _load()


def _function(name: str, result: Any, *arguments: Any, unlocks: bool = False) -> Any:
    try:
        found = getattr(_unlocking if unlocks else _locking, name)
    except AttributeError as error:
        raise ImportError('the shared library is not that of hcyclient, or is too old: '
                          f'{error}') from None
    found.restype = result
    # A handle is passed as it is, which takes less time than by a declared type.
    if arguments != (c_void_p,):
        found.argtypes = arguments
    return found


def uninterrupted_method(function: Any) -> Any:
    """A method that is not written in Python. A signal handler could interrupt a finalizer written
    in Python, and an exception raised in a finalizer is lost."""
    make = ctypes.pythonapi.PyInstanceMethod_New
    make.restype, make.argtypes = ctypes.py_object, (ctypes.py_object,)
    return make(function)


class Handle(c_void_p):
    """Owns an array of the library. Functions return it and calls write into it directly, so that
    an interrupt can never lose the array."""

    __slots__ = ()
    __del__ = uninterrupted_method(_function('hcyDestroyArray', None, c_void_p))


initialize = _function('hcyInitializeEx', c_void_p, c_int)
terminate = _function('hcyTerminate', None)
initialization_error = _function('hcyGetInitializationErrorMessage', c_char_p)

create_numeric = _function('hcyCreateNumericMatrix', Handle, c_size_t, c_size_t, c_int32, c_int32)
create_double_scalar = _function('hcyCreateDoubleScalar', Handle, c_double)
create_logical = _function('hcyCreateLogicalMatrix', Handle, c_size_t, c_size_t)
create_logical_scalar = _function('hcyCreateLogicalScalar', Handle, c_bool)
create_char = _function('hcyCreateCharArray', Handle, c_size_t, c_void_p)
create_cell = _function('hcyCreateCellMatrix', Handle, c_size_t, c_size_t)
create_struct = _function('hcyCreateStructMatrix', Handle, c_size_t, c_size_t, c_int, c_void_p)
create_sparse = _function('hcyCreateSparse', Handle, c_size_t, c_size_t, c_size_t, c_int32)
create_sparse_logical = _function('hcyCreateSparseLogicalMatrix', Handle, c_size_t, c_size_t,
                                  c_size_t)

get_class = _function('hcyGetClassID', c_int32, c_void_p)
is_complex = _function('hcyIsComplex', c_bool, c_void_p)
is_sparse = _function('hcyIsSparse', c_bool, c_void_p)
get_dimension_count = _function('hcyGetNumberOfDimensions', c_size_t, c_void_p)
get_row_count = _function('hcyGetM', c_size_t, c_void_p)
get_dimensions = _function('hcyGetDimensions', ctypes.POINTER(c_size_t), c_void_p)
get_element_count = _function('hcyGetNumberOfElements', c_size_t, c_void_p)
get_element_size = _function('hcyGetElementSize', c_size_t, c_void_p)
# How many elements a sparse array has room for.
get_room = _function('hcyGetNzmax', c_size_t, c_void_p)
# Unlike the others, this can take long: it writes all elements.
set_dimensions = _function('hcySetDimensions', c_int, c_void_p, c_void_p, c_size_t, unlocks=True)

get_data = _function('hcyGetData', c_void_p, c_void_p)
get_imaginary = _function('hcyGetImagData', c_void_p, c_void_p)
get_logicals = _function('hcyGetLogicals', c_void_p, c_void_p)
get_chars = _function('hcyGetChars', c_void_p, c_void_p)
get_rows = _function('hcyGetIr', c_void_p, c_void_p)
get_column_starts = _function('hcyGetJc', c_void_p, c_void_p)

get_cell = _function('hcyGetCell', Handle, c_void_p, c_size_t)
set_cell = _function('hcySetCell', None, c_void_p, c_size_t, c_void_p)
get_field_count = _function('hcyGetNumberOfFields', c_int, c_void_p)
get_field_name = _function('hcyGetFieldNameByNumber', c_char_p, c_void_p, c_int)
get_field = _function('hcyGetFieldByNumber', Handle, c_void_p, c_size_t, c_int)
set_field = _function('hcySetFieldByNumber', None, c_void_p, c_size_t, c_int, c_void_p)
