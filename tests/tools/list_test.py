#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""hcy list shows the index of a server."""
import json
import os
import pathlib
import subprocess
import tempfile
import time
import unittest

from index_server import FUNCTIONS, IndexServer
from local_server import LocalServer
from pseudo_terminal import PseudoTerminal

HCY = os.environ['HCY_PROGRAM']
TABLE = """math/plus A B    The sum, element by element.
text/upper TEXT  Letters in upper case.
echo
"""


def listed(*arguments, **environment):
    done = subprocess.run([HCY, 'list', *arguments], capture_output=True, text=True, check=False,
                          env={'HCY_CONFIG': '/dev/null', **os.environ, **environment})
    return done.stdout, done.stderr, done.returncode


class List(unittest.TestCase):
    def test_of_a_server(self):
        with IndexServer() as server, tempfile.TemporaryDirectory() as directory:
            self.assertEqual(listed(server.url), (TABLE, '', 0))
            self.assertEqual(listed(server.url + '/'), (TABLE, '', 0))
            self.assertEqual(listed(HCY_SERVER=server.url), (TABLE, '', 0))
            config = pathlib.Path(directory, 'config.toml')
            config.write_text(f'[servers.lab]\nurl = "{server.url}"\n')
            self.assertEqual(listed('@lab', HCY_CONFIG=str(config)), (TABLE, '', 0))
            self.assertEqual(listed(server.url, '--raw')[0], 'math/plus\ntext/upper\necho\n')
            self.assertEqual(json.loads(listed(server.url, '--json')[0]), {'functions': FUNCTIONS})

    def test_of_the_local_server(self):
        with LocalServer() as server:
            names = listed(server.url, '--raw')[0].split()
            self.assertLessEqual({'echo', 'linalg/solve', 'math/plus', 'text/upper'}, set(names))
            self.assertEqual(names, sorted(names))
            table = listed(server.url)
            self.assertEqual(table[1:], ('', 0))
            self.assertEqual([line.split()[0] for line in table[0].splitlines()], names)
            self.assertIn('linalg/solve A (n by n), B (n by k)', table[0])
            index = json.loads(listed(server.url, '--json')[0])
            self.assertEqual([function['name'] for function in index['functions']], names)

    def test_is_cut_to_the_terminal(self):
        with IndexServer() as server, PseudoTerminal([HCY, 'list', server.url], 24) as terminal:
            self.assertEqual(terminal.finish()[0],
                             'math/plus A B    The su…\ntext/upper TEXT  Letter…\necho\n')

    def test_failures(self):
        with IndexServer() as server:
            self.assertEqual(listed(server.url + '/x'), ('', 'hcy: HTTP status 404 Not Found\n', 2))
        for index, problem in (('<html>', 'bad JSON: invalid literal'),
                               ('[]', 'the index must be an object'),
                               ('{}', 'the index has no list of functions'),
                               ('{"functions":{}}', 'the functions must be a list'),
                               ('{"functions":[1]}', 'a function must be an object'),
                               ('{"functions":[{}]}', 'a function has no name'),
                               ('{"functions":[{"name":1}]}', 'expected a string or a list of strings')):
            with IndexServer(index) as server:
                self.assertEqual(listed(server.url), (
                    '', 'hcy: the server did not send an index of its functions as JSON: '
                    f'{problem}\n', 3))
        with LocalServer() as server:
            self.assertEqual(listed(server.url, '--max-reply', '100'), (
                '', 'hcy: the index is larger than --max-reply allows, 100 bytes\n', 3))
            self.assertEqual(listed(server.url, '--max-reply', '100000')[2], 0)
        with IndexServer(delay=0.5) as server:
            output, error, status = listed(server.url, '--timeout', '0.0000001')
            self.assertEqual((output, error.splitlines()[0], status),
                             ('', 'hcy: Timeout was reached', 3))
        _, error, status = listed('http://127.0.0.2:1')
        self.assertRegex(error, "^hcy: (Couldn't|Could not) connect to server\n     no connection to http")
        self.assertEqual(status, 3)
        self.assertEqual(listed('ftp://127.0.0.1')[2], 64)
        self.assertIn('neither HCY_SERVER nor /dev/null names a server', listed()[1])

    def test_nothing_commands_the_terminal(self):
        with IndexServer('{"functions":[{"name":"a\\u001b[2J","summary":"b\\nc"}]}') as server:
            self.assertEqual(listed(server.url)[0], 'a\\u001b[2J  b\\nc\n')
            self.assertEqual(listed(server.url, '-r')[0], 'a\\u001b[2J\n')
        index = '{"functions":[{"name":"a\u009b\u202e"}]}'
        with IndexServer(index) as server:
            with PseudoTerminal([HCY, 'list', server.url, '--json']) as terminal:
                self.assertEqual(terminal.finish()[0],
                                 '{"functions":[{"name":"a\\u009b\\u202e"}]}\n')
            self.assertEqual(listed(server.url, '--json')[0], index + '\n')


class Suggestion(unittest.TestCase):
    """After a 404, hcy call looks into the index for a similar name."""

    def called(self, server, function, *arguments):
        done = subprocess.run([HCY, 'call', f'{server.url}/{function}', *arguments], text=True,
                              capture_output=True, check=False, stdin=subprocess.DEVNULL)
        return done.stderr, done.returncode

    def index_of(self, *names):
        return json.dumps({'functions': [{'name': name} for name in names]})

    def test_of_a_similar_name(self):
        suggested = "hcy: HTTP status 404 Not Found; did you mean 'math/plus'?\n"
        with IndexServer() as server:
            for name in ('math/pluss', 'math/puls', '/math/plus2/', 'plus', 'math/pluss?a=b'):
                self.assertEqual(self.called(server, name, '2', '3'), (suggested, 2), name)
            self.assertEqual(server.requests, 5)

    def test_of_no_name(self):
        unchanged = ('hcy: HTTP status 404 Not Found\n', 2)
        for index, name in ((None, 'no/such/function'), (None, 'math/plus'),
                            (self.index_of('a/twice', 'b/twice'), 'twice'), ('<html>', 'pluss'),
                            (self.index_of(*['plus'] * 80000), 'pluss'),
                            (self.index_of('long' * 100), 'long' * 99), ('', 'pluss')):
            with IndexServer(index) as server:
                self.assertEqual(self.called(server, name), unchanged, name)

    def test_of_an_address_without_a_function(self):
        with IndexServer() as server:
            error, status = self.called(server, '')
        self.assertEqual((error, status), (
            'hcy: HTTP status 404 Not Found; the URL names no function, but only the server: hcy list shows '
            'its functions\n', 2))

    def test_only_a_person_is_asked(self):
        with IndexServer() as server:
            message = '{"kind":"http","message":"HTTP status 404 Not Found","status":404}\n'
            self.assertEqual(self.called(server, 'math/pluss', '--json'), (message, 2))
            self.assertNotIn('did you mean', self.called(server, 'math/pluss', '--each')[0])
            self.assertEqual(server.requests, 0)

    def test_the_request_is_short(self):
        with IndexServer(delay=20) as server:
            start = time.monotonic()
            self.assertEqual(self.called(server, 'math/pluss'),
                             ('hcy: HTTP status 404 Not Found\n', 2))
            self.assertLess(time.monotonic() - start, 15)

    def test_nothing_commands_the_terminal(self):
        with IndexServer(self.index_of('plus\x1b[2J\nb')) as server:
            self.assertEqual(self.called(server, 'plus')[0], 'hcy: HTTP status 404 Not Found\n')
            self.assertEqual(self.called(server, 'plusx[2Jxb')[0], 'hcy: HTTP status 404 Not Found; '
                             "did you mean 'plus\\u001b[2J\\nb'?\n")


if __name__ == '__main__':
    os.environ.pop('HCY_SERVER', None)
    unittest.main()
