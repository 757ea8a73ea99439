#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Every item that hcy call -v prints."""
import http.server
import os
import pathlib
import re
import socket
import ssl
import subprocess
import tempfile
import threading
import time
import unittest

from certificates import make_certificates
from local_server import LocalServer

HCY = os.environ['HCY_PROGRAM']


def details_of(*arguments):
    """The lines on standard error."""
    done = subprocess.run([HCY, 'call', '-v', *arguments], capture_output=True, text=True,
                          stdin=subprocess.DEVNULL, check=False)
    return done.stderr.splitlines()


class SlowServer:
    """Answers one request over TLS with status 503, with a pause before each step."""

    PAUSE = 0.3

    def __init__(self, directory):
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(f'{directory}/server.pem', f'{directory}/server.key')
        listener = socket.create_server(('127.0.0.1', 0))
        self.url = f'https://127.0.0.1:{listener.getsockname()[1]}/slow'
        self.thread = threading.Thread(target=self.answer, args=(listener, context))
        self.thread.start()

    def answer(self, listener, context):
        with listener, listener.accept()[0] as plain, \
                context.wrap_socket(plain, server_side=True,
                                    do_handshake_on_connect=False) as connection:
            time.sleep(self.PAUSE)
            connection.do_handshake()
            request = connection.recv(65536)
            while b'\r\n\r\n' not in request or not request.endswith(BODY_END):
                request += connection.recv(65536)
            time.sleep(self.PAUSE)
            connection.sendall(b'HTTP/1.1 503 Busy now\r\nContent-Length: 5\r\n\r\n')
            time.sleep(self.PAUSE)
            connection.sendall(b'later')


class AnsweringServer(http.server.HTTPServer):
    """Answers each POST with a status and a body."""

    def __init__(self, status, body):
        class Handler(http.server.BaseHTTPRequestHandler):
            def do_POST(self):
                self.rfile.read(int(self.headers['Content-Length']))
                self.send_response(status)
                self.send_header('Content-Length', str(len(body)))
                self.end_headers()
                self.wfile.write(body)

            def log_message(self, *_):
                pass

        super().__init__(('127.0.0.1', 0), Handler)
        self.thread = threading.Thread(target=self.serve_forever, args=(0.01,))

    def __enter__(self):
        self.thread.start()
        return f'http://127.0.0.1:{self.server_port}/f'

    def __exit__(self, *_):
        self.shutdown()
        self.thread.join()
        self.server_close()


# The argument of the call below, which is last in its request.
BODY_END = b'end'


class Verbose(unittest.TestCase):
    def test_the_request_and_the_reply(self):
        with LocalServer() as server, tempfile.TemporaryDirectory() as directory:
            bodies = [pathlib.Path(directory, name) for name in ('request', 'reply')]
            url = server.url + '/linalg/svd'
            details = details_of(url, '[[3,0],[0,4]]', '-n', '3', '--save-request', str(bodies[0]),
                                 '--save-reply', str(bodies[1]))
            request_size, reply_size = (body.stat().st_size for body in bodies)
            self.assertEqual(details[:-1], [
                f'> POST {url}',
                '> Content-Type: application/x-google-protobuf',
                '> User-Agent: Halcyon C client',
                f'> {request_size} bytes, 3 outputs requested',
                '>   argument 1: double 2-by-2',
                f'< HTTP 200 OK, {reply_size} bytes'])
            self.assertNotEqual(request_size, reply_size)
            details = details_of(server.url + '/echo', '{"a":[1,2]}', 'text:x', 'int8:[[7]]')
            self.assertEqual(details[3:7], [
                '> 73 bytes, 1 output requested',
                '>   argument 1: struct 1-by-1',
                '>   argument 2: char 1-by-1 = "x"',
                '>   argument 3: int8 1-by-1 = 7'])

    def test_the_times(self):
        with tempfile.TemporaryDirectory() as directory:
            make_certificates(directory)
            server = SlowServer(directory)
            details = details_of(server.url, 'text:' + BODY_END.decode(), '-k')
            server.thread.join()
        self.assertEqual(details[-4], '< HTTP 503 Busy now, 5 bytes')
        self.assertEqual(details[-2], '<   later')
        times = re.fullmatch(r'< connected after (\d+\.\d) ms, first byte after (\d+\.\d) ms, '
                             r'all after (\d+\.\d) ms', details[-3])
        self.assertTrue(times, details)
        connected, first, last = (float(time) / 1000 for time in times.groups())
        self.assertGreaterEqual(connected, 0.99 * SlowServer.PAUSE)
        self.assertGreaterEqual(first - connected, 0.99 * SlowServer.PAUSE)
        # The client may see the first byte late, but the others not early.
        self.assertGreaterEqual(last - first, 0.3 * SlowServer.PAUSE)
        self.assertGreaterEqual(last, 2.99 * SlowServer.PAUSE)

    def shown_body(self, status, body):
        """The lines of the body, between the line of the times and the failure."""
        with AnsweringServer(status, body) as url:
            details = details_of(url, '1')
        first = 1 + next(i for i, line in enumerate(details) if line.startswith('< connected'))
        last = next(i for i, line in enumerate(details) if line.startswith('hcy: '))
        return details[first:last]

    def test_the_text_of_a_failure(self):
        self.assertEqual(self.shown_body(500, b'Internal trouble:\r\n\x1b[31mdatabase is down'),
                         ['<   Internal trouble:', '<   \\u001b[31mdatabase is down'])
        self.assertEqual(self.shown_body(500, b'line\n' * 12), ['<   line'] * 10 + ['<   …'])
        long_line = self.shown_body(500, 'é'.encode() * 5000)
        self.assertEqual(long_line, ['<   ' + 'é' * 71 + '…'])
        self.assertEqual(self.shown_body(500, b'\0binary'), [])
        self.assertEqual(self.shown_body(500, b'\xff\xfe\xfd\xfc\xfb'), [])
        self.assertEqual(self.shown_body(500, b''), [])

    def test_a_reply_that_is_no_result(self):
        self.assertEqual(self.shown_body(200, b'<html>sign in</html>'),
                         ['<   <html>sign in</html>'])
        self.assertEqual(self.shown_body(200, b'please sign in'), ['<   please sign in'])


if __name__ == '__main__':
    unittest.main()
