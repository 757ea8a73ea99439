#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""hcy on a terminal: how wide it shows things, its progress bar, the pass phrase, Ctrl-C."""
import os
import re
import signal
import subprocess
import tempfile
import time
import unittest

from certificates import make_certificates
from local_server import LocalServer
from pseudo_terminal import PseudoTerminal

HCY = os.environ['HCY_PROGRAM']


class OnATerminal(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.server = LocalServer()
        cls.url = cls.server.url

    @classmethod
    def tearDownClass(cls):
        cls.server.__exit__()

    def shown(self, *arguments, columns=80):
        with PseudoTerminal([HCY, *arguments], columns) as terminal:
            return terminal.finish()

    def test_outputs_are_cut_to_the_width(self):
        shown, status = self.shown('call', self.url + '/echo', '[[10,20,30],[40,50,60]]',
                                   columns=12)
        self.assertEqual(status, 0)
        self.assertEqual(shown, 'ans: double…\n  10  20  30\n  40  50  60\n')
        shown, _ = self.shown('call', self.url + '/echo', '[[10,20,30],[40,50,60]]', columns=11)
        self.assertEqual(shown, 'ans: doubl…\n  10  20\n  40  50\n  … 1 more…\n')
        # A terminal that does not tell its width.
        numbers = ['call', self.url + '/echo', str(list(range(100)))]
        self.assertEqual(self.shown(*numbers, columns=0), self.shown(*numbers, columns=80))
        long_text = '"' + 'x' * 100 + '"'
        shown, _ = self.shown('call', self.url + '/echo', long_text)
        self.assertEqual(len(shown), 81)

    def test_rows_and_elements_are_folded(self):
        column = str([[i] for i in range(100)])
        call = ['call', self.url + '/echo']
        first, last = (''.join(f'  {i:2}\n' for i in span) for span in (range(10), range(90, 100)))
        shown, _ = self.shown(*call, column)
        self.assertEqual(shown, f'ans: double 100-by-1\n{first}  … 80 more rows\n{last}')
        shown, _ = self.shown(*call, column, '--full')
        self.assertEqual(shown.count('\n'), 101)
        shown, _ = self.shown(*call, str([[i] for i in range(20)]))
        self.assertEqual(shown.count('\n'), 21)
        shown, _ = self.shown(*call, str(['a'] * 22).replace("'", '"'))
        self.assertIn('  (0, 9): char 1-by-1 = "a"\n  … 2 more elements\n  (0, 12): char', shown)
        shown, _ = self.shown(*call, '[' + ','.join(['{"a":1}'] * 21) + ']')
        self.assertIn('  (0, 4):\n    a: double 1-by-1 = 1\n  … 11 more elements\n  (0, 16):', shown)
        pages = '{"$double":[' + ','.join(['1'] * 22) + '],"$shape":[1,1,22]}'
        shown, _ = self.shown(*call, pages)
        self.assertIn('  (:, :, 4)\n  1\n  … 12 more pages\n  (:, :, 17)\n', shown)
        piped = subprocess.run([HCY, *call, column], capture_output=True, text=True, check=True)
        self.assertEqual(piped.stdout.count('\n'), 101)

    def test_text_cannot_command_the_terminal(self):
        shown, _ = self.shown('call', self.url + '/echo', r'"a\u001b[31m\nb"', '--raw')
        self.assertEqual(shown, 'a\\u001b[31m\nb\n')
        table = ['call', self.url + '/echo', r'[{"a\u009b":"\u001b[2J\u202e"},{"a\u009b":"b"}]']
        self.assertEqual(self.shown(*table, '--csv')[0],
                         'a\\u009b\n\\u001b[2J\\u202e\nb\n')
        self.assertEqual(self.shown('call', self.url + '/echo', '["a\\u001b","b"]', '--tsv')[0],
                         'a\\u001b\tb\n')
        with tempfile.NamedTemporaryFile('w', suffix='.jsonl') as file:
            file.write(r'["a\u001b\tb"]')
            file.flush()
            each = ['call', self.url + '/echo', '--each', file.name, '--raw']
            self.assertEqual(self.shown(*each)[0], 'a\\u001b\tb\n')
            piped = subprocess.run([HCY, *each], capture_output=True, text=True, check=True)
            self.assertEqual(piped.stdout, 'a\x1b\tb\n')
        piped = subprocess.run([HCY, *table, '--csv'], capture_output=True, text=True, check=True)
        self.assertEqual(piped.stdout, 'a\x9b\n\x1b[2J\u202e\nb\n')

    def test_json_and_what_is_no_terminal_are_not_cut(self):
        numbers = list(range(100))
        shown, _ = self.shown('call', self.url + '/echo', str(numbers), '--json')
        self.assertEqual(shown, str(numbers).replace(' ', '') + '\n')
        piped = subprocess.run([HCY, 'call', self.url + '/echo', str(numbers)],
                               capture_output=True, text=True, check=True).stdout
        self.assertEqual(piped.split()[-100:], [str(number) for number in numbers])

    def test_a_benchmark_shows_how_far_it_is_and_takes_that_away(self):
        arguments = [HCY, 'bench', self.url + '/demo/sleep', '0.1', '--calls', '8']
        with PseudoTerminal(arguments, 30, stdout=subprocess.PIPE) as terminal:
            shown, status = terminal.finish()
            summary = terminal.process.stdout.read().decode()
        self.assertEqual(status, 0)
        self.assertRegex(shown, r'^(\r\[#*\.*\] \d/8  \d+ calls/s\x1b\[K)+\r\x1b\[K$')
        self.assertTrue(all(len(line) < 30 for line in re.split(r'\r|\x1b\[K', shown)), shown)
        self.assertRegex(summary, r'^calls     8 on 1 thread in \d+\.\d+ s\nrate')

    def test_no_progress_is_shown_where_standard_error_is_no_terminal(self):
        arguments = [HCY, 'bench', self.url + '/demo/sleep', '0.1', '--calls', '4']
        with PseudoTerminal(arguments, stderr=subprocess.PIPE) as terminal:
            shown, _ = terminal.finish()
            self.assertEqual(terminal.process.stderr.read(), b'')
        self.assertTrue(shown.startswith('calls     4 on 1 thread'), shown)

    def test_ctrl_c_ends_a_benchmark_with_what_was_measured(self):
        with PseudoTerminal([HCY, 'bench', self.url + '/demo/sleep', '0.05', '--calls', '100000',
                             '--threads', '2']) as terminal:
            terminal.read_until(r'\] ([4-9]|\d\d+)/')
            terminal.type('\x03')
            shown, status = terminal.finish()
        self.assertEqual(status, 0)
        calls = re.search(r'calls     (\d+) on 2 threads in (\d\.\d+) s', shown)
        self.assertTrue(calls, shown)
        self.assertGreaterEqual(int(calls[1]), 4)
        self.assertRegex(shown, r'latency   min \d+\.\d+  p50 [\d.]+  ')

    def test_ctrl_c_does_not_wait_for_calls_that_are_under_way(self):
        start = time.monotonic()
        with PseudoTerminal([HCY, 'bench', self.url + '/demo/sleep', '60',
                             '--calls', '2']) as terminal:
            terminal.read_until('0/2')
            terminal.type('\x03')
            shown, status = terminal.finish()
        self.assertEqual(status, 0)
        self.assertIn('no call succeeded', shown)
        self.assertLess(time.monotonic() - start, 30)

    def test_ctrl_c_does_not_wait_where_nothing_can_be_shown(self):
        with open('/dev/full', 'wb') as full, PseudoTerminal(
                [HCY, 'bench', self.url + '/demo/sleep', '60'], stdout=full) as terminal:
            terminal.read_until('0/1000')
            start = time.monotonic()
            terminal.type('\x03')
            shown, status = terminal.finish()
        self.assertEqual(status, 3)
        self.assertIn('hcy: standard output: No space left on device\n', shown)
        self.assertLess(time.monotonic() - start, 30)

    def test_no_body_is_written_to_it(self):
        shown, status = self.shown('encode', '2')
        self.assertEqual(shown, 'hcy: the body is binary; write it to a file with --output FILE or '
                         '> FILE\n')
        self.assertEqual(status, 64)

    def test_many_calls_show_how_far_they_are(self):
        lines = '[0.15]\n' * 4
        with tempfile.NamedTemporaryFile('w', suffix='.jsonl') as file:
            file.write(lines)
            file.flush()
            arguments = [HCY, 'call', self.url + '/demo/sleep', '--each', file.name]
            with PseudoTerminal(arguments, 40, stdout=subprocess.PIPE) as terminal:
                shown, status = terminal.finish()
                results = terminal.process.stdout.read().decode()
        self.assertEqual((status, results), (0, '0.15\n' * 4))
        self.assertRegex(shown, r'^(\r\[#*\.*\] \d/4  \d+ calls/s\x1b\[K)+\r\x1b\[K$')
        # The number of lines in a pipe is not known before its end.
        command = f"printf '{lines}' | {HCY} call {self.url}/demo/sleep --each > /dev/null"
        shown, _ = PseudoTerminal(['sh', '-c', command.replace('\n', '\\n')], 40).finish()
        self.assertRegex(shown, r'^(\r\d  \d+ calls/s\x1b\[K)+\r\x1b\[K$')

    def test_ctrl_c_ends_many_calls_with_their_number(self):
        with tempfile.NamedTemporaryFile('w', suffix='.jsonl') as file:
            file.write('[0.05]\n[]\n' + '[0.05]\n' * 10000)
            file.flush()
            with PseudoTerminal([HCY, 'call', self.url + '/demo/sleep', '--each', file.name,
                                 '--jobs', '2'], stdout=subprocess.DEVNULL) as terminal:
                terminal.read_until(r'\] ([4-9]|\d\d+)/10002 ')
                terminal.type('\x03')
                shown, status = terminal.finish()
        self.assertEqual(status, -signal.SIGINT)
        ended = re.search(r'\r\x1b\[K(?:\^C)?hcy: interrupted after (\d+) calls, 1 of which failed\n$',
                          shown)
        self.assertTrue(ended, shown[-200:])
        self.assertGreaterEqual(int(ended[1]), 4)

    def test_threads_call_at_once(self):
        shown, status = self.shown('bench', self.url + '/demo/sleep', '1', '--calls', '4',
                                   '--threads', '4')
        self.assertEqual(status, 0)
        calls = re.search(r'calls     4 on 4 threads in (\d\.\d+) s\nrate +([\d.]+) calls/s', shown)
        self.assertTrue(calls, shown)
        self.assertTrue(1 <= float(calls[1]) < 3, shown)
        self.assertAlmostEqual(float(calls[1]) * float(calls[2]), 4, delta=0.1)


class PassPhrase(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.directory = tempfile.TemporaryDirectory()
        make_certificates(cls.directory.name)
        cls.server = LocalServer('--cert', cls.file('server.pem'), '--key', cls.file('server.key'),
                                 '--client-ca', cls.file('ca.pem'))
        cls.command = [HCY, 'call', cls.server.url + '/math/plus', '2', '3',
                       '--ca', cls.file('ca.pem'), '--cert', cls.file('client.pem'),
                       '--key', cls.file('client.key')]

    @classmethod
    def tearDownClass(cls):
        cls.server.__exit__()
        cls.directory.cleanup()

    @classmethod
    def file(cls, name):
        return os.path.join(cls.directory.name, name)

    def answered(self, typed, columns=80):
        with PseudoTerminal([*self.command, '--ask-key-pass'], columns) as terminal:
            terminal.read_until('Pass phrase of the private key: ')
            self.assertFalse(terminal.echoes())
            terminal.type(typed)
            shown, status = terminal.finish()
            return shown, status, terminal.echoes()

    def test_it_is_asked_for_and_not_shown(self):
        shown, status, echoes = self.answered('four words\n')
        self.assertEqual(shown, 'Pass phrase of the private key: \nans: double 1-by-1 = 5\n')
        self.assertEqual(status, 0)
        self.assertTrue(echoes)

    def test_typing_can_be_mended(self):
        for typed in ('four wordé\x7fs\n', 'three words\x15four words\n'):
            self.assertEqual(self.answered(typed)[1], 0)

    def test_a_wrong_one_is_a_failure_of_transport(self):
        shown, status, _ = self.answered('three words\n')
        self.assertRegex(shown, 'hcy: (Problem with the local SSL certificate'
                                '|A libcurl function was given a bad argument)\n')
        self.assertEqual(status, 3)

    def test_none_is_a_mistake_of_usage(self):
        for typed in ('\n', '\x04'):
            shown, status, _ = self.answered(typed)
            self.assertIn('hcy: no pass phrase was given\n', shown)
            self.assertEqual(status, 64)

    def test_ctrl_c_leaves_the_terminal_as_it_was(self):
        _, status, echoes = self.answered('fou\x03')
        self.assertEqual(status, -signal.SIGINT)
        self.assertTrue(echoes)

    def test_signals_leave_the_terminal_as_it_was(self):
        for number in (signal.SIGTERM, signal.SIGHUP, signal.SIGINT, signal.SIGQUIT):
            with PseudoTerminal([*self.command, '--ask-key-pass']) as terminal:
                terminal.read_until('Pass phrase of the private key: ')
                self.assertFalse(terminal.echoes())
                terminal.process.send_signal(number)
                self.assertEqual(terminal.process.wait(30), -number)
                self.assertTrue(terminal.echoes())

    def test_it_comes_from_a_file(self):
        with open(self.file('pass'), 'w', encoding='utf-8') as file:
            file.write('four words\n')
            os.fchmod(file.fileno(), 0o600)
        done = subprocess.run([*self.command, '--key-pass-file', self.file('pass')],
                              capture_output=True, text=True, check=False)
        self.assertEqual((done.stdout, done.stderr, done.returncode),
                         ('ans: double 1-by-1 = 5\n', '', 0))
        seen = subprocess.run([*self.command, '--key-pass-file', self.file('pass'), '-v'],
                              capture_output=True, text=True, check=False)
        self.assertEqual((seen.stdout, seen.returncode), ('ans: double 1-by-1 = 5\n', 0))
        self.assertIn('< HTTP 200 OK, ', seen.stderr)
        self.assertNotIn('four words', seen.stderr)

    def test_a_function_is_suggested_with_the_same_settings(self):
        with open(self.file('pass'), 'w', encoding='utf-8') as file:
            file.write('four words\n')
            os.fchmod(file.fileno(), 0o600)
        command = [word.replace('math/plus', 'math/pluss') for word in self.command]
        done = subprocess.run([*command, '--key-pass-file', self.file('pass')],
                              capture_output=True, text=True, check=False)
        self.assertEqual((done.stderr, done.returncode), (
            "hcy: HTTP status 404 Not Found; did you mean 'math/plus'?\n", 2))

    def test_a_verbose_call_checks_certificates_as_any_other(self):
        without_authority = [*self.command[:5], '-v']
        seen = subprocess.run(without_authority, capture_output=True, text=True, check=False)
        plain = subprocess.run(without_authority[:-1], capture_output=True, text=True, check=False)
        self.assertEqual((seen.returncode, plain.returncode), (3, 3))
        failure = plain.stderr.replace(' (hcy call -v shows the reason)', '')
        self.assertNotEqual(failure, plain.stderr)
        self.assertTrue(seen.stderr.endswith(failure), seen.stderr)


if __name__ == '__main__':
    unittest.main()
