# SPDX-License-Identifier: Apache-2.0
"""A server that answers every request with the same bytes, and the encoding of such replies."""
import contextlib
import http.server
import struct
import threading

UINT8, INT16, DOUBLE, LOGICAL, CHAR, STRUCT, CELL, SPARSE, OBJECT = 0, 3, 9, 10, 11, 12, 13, 14, 15


def varint(number):
    found = bytearray()
    while number > 0x7F:
        found.append(number & 0x7F | 0x80)
        number >>= 7
    return bytes(found + bytes([number]))


def field(number, content):
    """A number, or bytes with their length."""
    if isinstance(content, int):
        return varint(number << 3) + varint(content)
    return varint(number << 3 | 2) + varint(len(content)) + content


def packed(numbers):
    return b''.join(map(varint, numbers))


def doubles(*numbers):
    return struct.pack(f'<{len(numbers)}d', *numbers)


def array(kind, dimensions, content_field=None, content=b'', **more):
    message = field(1, kind) + field(2, packed(dimensions))
    return message + (field(content_field, content) if content_field else b'')


def double_array(dimensions, *numbers):
    return array(DOUBLE, dimensions, 25, field(1, doubles(*numbers)))


def cell_array(dimensions, *elements):
    return array(CELL, dimensions, 28, b''.join(field(1, element) for element in elements))


def struct_array(dimensions, names, *elements):
    return array(STRUCT, dimensions, 29, b''.join(
        [field(1, name) for name in names] + [field(2, element) for element in elements]))


def sparse_array(dimensions, rows, starts, values, imaginary=None):
    content = field(1, 0) + field(2, packed(rows)) + field(3, packed(starts))
    parts = field(1, doubles(*values)) + (field(2, doubles(*imaginary)) if imaginary else b'')
    return array(SPARSE, dimensions, 30, content + field(16, parts))


def result(*outputs):
    return b''.join(field(1, output) for output in outputs)


@contextlib.contextmanager
def answering(body, status=200, reason=None, meanwhile=lambda: None, heard=lambda request: None,
              chunked=False):
    """The URL of a server that answers so (or with what the body returns, if it is a function),
    hears the bodies of requests, and does something before each answer. If it is chunked, the
    reply does not say in advance how long it is."""

    class Handler(http.server.BaseHTTPRequestHandler):
        protocol_version = 'HTTP/1.1'
        disable_nagle_algorithm = True

        def do_POST(self):
            heard(self.rfile.read(int(self.headers['Content-Length'])))
            meanwhile()
            reply = body() if callable(body) else body
            self.send_response(status, reason)
            if chunked:
                self.send_header('Transfer-Encoding', 'chunked')
                reply = b'%x\r\n%b\r\n0\r\n\r\n' % (len(reply), reply)
            else:
                self.send_header('Content-Length', str(len(reply)))
            self.end_headers()
            self.wfile.write(reply)

        def log_message(self, *_):
            pass

    listener = http.server.ThreadingHTTPServer(('127.0.0.1', 0), Handler)
    listener.daemon_threads = True
    thread = threading.Thread(target=listener.serve_forever, kwargs={'poll_interval': 0.01})
    thread.start()
    try:
        yield f'http://127.0.0.1:{listener.server_port}/any'
    finally:
        listener.shutdown()
        thread.join()
        listener.server_close()
