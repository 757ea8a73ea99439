#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Every item that hcy call -v prints."""
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
        self.assertEqual(details[-3], '< HTTP 503 Busy now, 5 bytes')
        times = re.fullmatch(r'< connected after (\d+\.\d) ms, first byte after (\d+\.\d) ms, '
                             r'all after (\d+\.\d) ms', details[-2])
        self.assertTrue(times, details)
        connected, first, last = (float(time) / 1000 for time in times.groups())
        self.assertGreaterEqual(connected, 0.99 * SlowServer.PAUSE)
        self.assertGreaterEqual(first - connected, 0.99 * SlowServer.PAUSE)
        # The client may see the first byte late, but the others not early.
        self.assertGreaterEqual(last - first, 0.3 * SlowServer.PAUSE)
        self.assertGreaterEqual(last, 2.99 * SlowServer.PAUSE)


if __name__ == '__main__':
    unittest.main()
