# SPDX-License-Identifier: Apache-2.0
"""Reads a reply once more, byte by byte, and compares the values that were made of it: each of
their elements has arrived, and is the one that stands there."""
import math

import numpy as np
from replies import CELL, CHAR, LOGICAL, SPARSE, STRUCT

VARINT, FIXED64, DELIMITED, GROUP, END_GROUP, FIXED32 = range(6)
DTYPES = ['u1', 'i1', 'u2', 'i2', 'u4', 'i4', 'u8', 'i8', 'f4', 'f8', '?', 'u2']  # up to char
BYTES, FIXED = ('u1', 'i1'), ('u4', 'i4', 'f4', 'f8')
FIRST_PART = 16


class Cut(Exception):
    """The message ends or is broken here; what was read so far has arrived."""


class Beginning(bytes):
    """What has arrived of a field that is cut."""


def varint_at(message, position):
    number = 0
    for shift in range(0, 70, 7):
        if position == len(message):
            raise Cut
        byte = message[position]
        position += 1
        number |= (byte & 0x7F) << shift
        if byte < 0x80:
            return number & (1 << 64) - 1, position
    raise Cut


def fixed_at(message, position, size):
    if position + size > len(message):
        raise Cut
    return message[position:position + size], position + size


def delimited_at(message, position):
    try:
        length, position = varint_at(message, position)
    except Cut:
        return Beginning(), len(message)
    content = message[position:position + length]
    return content if len(content) == length else Beginning(content), position + length


def fields(message):
    """The number, the wire type and the content of each field."""
    position, depth = 0, 0
    while position < len(message):
        tag, position = varint_at(message, position)
        number, kind = tag >> 3, tag & 7
        if number == 0 or tag >= 1 << 32:
            raise Cut
        content = None
        if kind == VARINT:
            content, position = varint_at(message, position)
        elif kind in (FIXED64, FIXED32):
            content, position = fixed_at(message, position, 8 if kind == FIXED64 else 4)
        elif kind == DELIMITED:
            content, position = delimited_at(message, position)
        elif kind == GROUP:
            depth += 1
        elif kind == END_GROUP and depth > 0:
            depth -= 1
        else:
            raise Cut
        if depth == 0 and content is not None:
            yield number, kind, content
        if isinstance(content, Beginning):
            raise Cut


def add_numbers(found, kind, content):
    if kind == VARINT:
        found.append(content)
    elif kind == DELIMITED:
        position = 0
        while position < len(content):
            number, position = varint_at(content, position)
            found.append(number)


class Numbers:
    """The elements of one class, as they lie in memory."""

    def __init__(self, dtype):
        self.dtype = np.dtype(dtype)
        self.parts = {1: bytearray(), 2: bytearray()}
        self.is_ever_complex = self.dtype != bool

    def read(self, message):
        for number, kind, content in fields(message):
            if number == 1 or number == 2 and self.is_ever_complex:
                self._add(self.parts[number], kind, content)

    def _add(self, part, kind, content):
        size = self.dtype.itemsize
        if self.dtype.str[1:] in BYTES:
            if kind == DELIMITED:
                part[:] = content
        elif self.dtype.str[1:] in FIXED:
            if kind == DELIMITED:
                part += content[:len(content) // size * size]
                if len(content) % size:
                    raise Cut
            elif kind == (FIXED64 if size == 8 else FIXED32):
                part += content
        else:
            self._add_varints(part, kind, content)

    def _add_varints(self, part, kind, content):
        found = []
        try:
            add_numbers(found, kind, content)
        finally:
            for number in found:
                value = int(number != 0) if self.dtype == bool else number
                part += value.to_bytes(8, 'little')[:self.dtype.itemsize]

    def require(self, part, elements, shape):
        """These are the first elements of the part."""
        raw = elements.tobytes('F')
        assert elements.shape == tuple(shape) and elements.dtype == self.dtype
        assert len(raw) == math.prod(shape) * self.dtype.itemsize <= len(self.parts[part])
        assert raw == self.parts[part][:len(raw)]


class Array:
    def __init__(self):
        self.kind = 0
        self.dimensions = []
        self.numbers = [Numbers(dtype) for dtype in DTYPES]
        self.cells, self.names, self.fields = [], [], []
        self.sparse_kind, self.rows, self.starts = 0, [], []
        self.sparse_numbers = [Numbers('f8'), Numbers('?')]

    def read(self, message):
        for number, kind, content in fields(message):
            part = number - FIRST_PART
            if number == 1 and kind == VARINT:
                self.kind = content & 0xFFFFFFFF
            elif number == 2:
                add_numbers(self.dimensions, kind, content)
            elif kind == DELIMITED and 0 <= part < len(self.numbers):
                self.numbers[part].read(content)
            elif kind == DELIMITED and number in (28, 29, 30):
                {28: self._read_cells, 29: self._read_structs,
                 30: self._read_sparse}[number](content)

    def _read_cells(self, message):
        for number, kind, content in fields(message):
            if (number, kind) == (1, DELIMITED):
                self.cells.append(Array())
                self.cells[-1].read(content)

    def _read_structs(self, message):
        for number, kind, content in fields(message):
            if (number, kind) == (1, DELIMITED):
                self.names.append(content)
            elif (number, kind) == (2, DELIMITED):
                self.fields.append(Array())
                self.fields[-1].read(content)

    def _read_sparse(self, message):
        for number, kind, content in fields(message):
            if number == 1 and kind == VARINT:
                self.sparse_kind = content & 0xFFFFFFFF
            elif number in (2, 3):
                add_numbers(self.rows if number == 2 else self.starts, kind, content)
            elif number in (16, 17) and kind == DELIMITED:
                self.sparse_numbers[number - 16].read(content)

    def require(self, value):
        """The value is this array, and holds nothing that has not arrived."""
        assert self.dimensions
        shape = tuple(self.dimensions) if len(self.dimensions) > 1 else (*self.dimensions, 1)
        if self.kind == CELL:
            self._require_cells(value, shape)
        elif self.kind == STRUCT:
            self._require_structs(value, shape)
        elif self.kind == SPARSE:
            self._require_sparse(value, shape)
        elif self.kind == CHAR:
            self._require_text(value, shape)
        elif value is None:
            assert shape == (0, 0)
        else:
            assert self.kind <= LOGICAL and isinstance(value, np.ndarray)
            require_numbers(self.numbers[self.kind], value, shape)

    def _require_cells(self, value, shape):
        assert isinstance(value, list) or value.shape == shape
        elements = value if isinstance(value, list) else value.ravel('F').tolist()
        assert len(elements) == math.prod(shape) <= len(self.cells)
        for element, arrived in zip(elements, self.cells):
            arrived.require(element)

    def _require_structs(self, value, shape):
        names = [name.split(b'\0')[0] for name in self.names]  # as those of C end
        if isinstance(value, np.ndarray):
            assert value.shape == shape
            require_names(value.dtype.names, names, self.names)
            if not value.dtype.names:
                return
            value = [dict(zip(value.dtype.names, element.tolist())) for element in value.ravel('F')]
        elements = [value] if isinstance(value, dict) else value
        assert len(elements) == math.prod(shape)
        for i, element in enumerate(elements):
            require_names(element, names, self.names)
            for name in element:
                first = self.names.index(name.encode(errors='surrogateescape'))
                assert i * len(names) + first < len(self.fields)
                self.fields[i * len(names) + first].require(element[name])

    def _require_sparse(self, value, shape):
        assert value.shape == shape
        assert value.indptr.tolist() == self.starts[:shape[1] + 1]
        stored = self.starts[shape[1]]
        assert value.indices.tolist() == self.rows[:stored]
        require_numbers(self.sparse_numbers[1 if self.sparse_kind else 0], value.data, (stored,))

    def _require_text(self, value, shape):
        if isinstance(value, str):
            units = np.frombuffer(value.encode('utf-16-le', 'surrogatepass'), 'u2')
            assert shape[0] == 1 or shape == (0, 0)
            assert len(units) == math.prod(shape)
        else:
            assert value.shape == shape and value.dtype == np.dtype('U1')
            units = np.frombuffer(value.tobytes('F'), 'u4').astype('u2')
        self.numbers[CHAR].require(1, units, (math.prod(shape),))


def require_names(found, names, arrived):
    """In order; the last one may be missing if it is cut."""
    expected = [name.decode(errors='surrogateescape') for name in dict.fromkeys(names)]
    is_cut = len(arrived) > 0 and isinstance(arrived[-1], Beginning)
    assert list(found) == expected or is_cut and list(found) == expected[:-1]


def require_numbers(arrived, value, shape):
    if value.dtype.names:
        parts = value['real'], value['imag']
    elif value.dtype.kind == 'c':
        parts = value.real, value.imag
    else:
        parts = value,
    for number, part in enumerate(parts, 1):
        arrived.require(number, part, shape)
    if value.size:
        assert len(parts) == (2 if arrived.parts[2] else 1)


def outputs_of(reply):
    """The outputs of a reply, as far as they have arrived."""
    outputs = []
    try:
        for number, kind, content in fields(reply):
            if (number, kind) == (1, DELIMITED):
                outputs.append(Array())
                outputs[-1].read(content)
    except Cut:
        pass
    return outputs
