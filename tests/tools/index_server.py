# SPDX-License-Identifier: Apache-2.0
"""A server that has an index of functions and no function."""
import http.server
import json
import threading
import time

FUNCTIONS = [{'name': 'math/plus', 'arguments': 'A B', 'summary': 'The sum, element by element.'},
             {'name': 'text/upper', 'arguments': ['TEXT'], 'summary': 'Letters in upper case.'},
             {'name': 'echo'}]


class IndexServer:
    def __init__(self, index=None, delay=0):
        self.requests = 0
        body = json.dumps({'functions': FUNCTIONS}) if index is None else index

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(handler):
                self.requests += 1
                time.sleep(delay)
                handler.answer()

            def answer(self):
                found = self.path == '/' and self.headers['Accept'] == 'application/json'
                self.send_response(200 if found else 404)
                self.end_headers()
                self.wfile.write(body.encode() if found else b'')

            def do_POST(self):
                self.rfile.read(int(self.headers['Content-Length']))
                self.send_error(404)

            def log_message(self, *_):
                pass

        self.server = http.server.ThreadingHTTPServer(('127.0.0.1', 0), Handler)
        self.url = f'http://127.0.0.1:{self.server.server_port}'
        threading.Thread(target=self.server.serve_forever, args=(0.05,), daemon=True).start()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.server.shutdown()
        self.server.server_close()
