#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The manual page of hcy knows the options that the program has, and every example in it, in that
of hcy-local-server, and in their help runs."""
import os
import pathlib
import re
import subprocess
import tempfile
import unittest
import urllib.request

from index_server import IndexServer
from local_server import LocalServer

CLASSES = ('double', 'single', 'int8', 'int16', 'int32', 'int64', 'uint8', 'uint16', 'uint32',
           'uint64', 'logical', 'char', 'struct', 'cell', 'complex', 'sparse')
WORDS = (*CLASSES, 'float64', 'float32', 'bool', 'complex64', 'complex128',
         'json', 'text', 'csv', 'tsv', 'npy')
HCY = os.environ['HCY_PROGRAM']
FOLDER = pathlib.Path(__file__).resolve().parents[2] / 'tools/hcy'
COMMANDS = ('call', 'bench', 'list', 'encode', 'show')

def output_of(*arguments, **more):
    return subprocess.run(arguments, capture_output=True, text=True, check=True, **more).stdout


def options_of(*command):
    """The options in the help: long ones, and short ones too."""
    names = re.findall(r'^ +((?:-[\w-]+,? *)+)', output_of(HCY, *command, '--help'), re.M)
    return set(re.findall(r'-[\w-]+', ' '.join(names)))


class Manual(unittest.TestCase):
    def test_it_is_formatted_without_a_warning(self):
        done = subprocess.run(['groff', '-t', '-ww', '-man', '-z', '-Tutf8', FOLDER / 'hcy.1'],
                              capture_output=True, text=True, check=False)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, '', ''))

    def test_it_names_every_option_and_no_other(self):
        page = output_of('groff', '-t', '-man', '-Tascii', '-P-cbou', FOLDER / 'hcy.1')
        named = set(re.findall(r'(?<![\w-])(?:--[a-z][a-z-]*|-[a-zA-Z](?!\w))', page.replace('-\n', '-')))
        options = set().union(options_of(), *(options_of(command) for command in COMMANDS))
        self.assertGreater(len(options), 20)
        self.assertEqual(named, options)

    def test_it_names_every_class(self):
        page = output_of('groff', '-t', '-man', '-Tascii', '-P-cbou', FOLDER / 'hcy.1')
        classes = re.search(r'The classes are(.*?)Two more.* (\w+):{.* (\w+):{',
                            ' '.join(page.split()))
        named = set(re.findall(r'[a-z]+\d*', classes[1])) - {'and'}
        self.assertEqual(named | {classes[2], classes[3]}, set(CLASSES))
        for name in set(WORDS) - {'text', 'csv', 'tsv', 'npy'}:
            self.assertIn(name, page)
            refusal = subprocess.run([HCY, 'call', 'http://x', name + ':@missing'],
                                     capture_output=True, text=True, check=False).stderr
            self.assertEqual(refusal, 'hcy: missing: No such file or directory\n')

    def test_it_is_of_this_version(self):
        version = output_of(HCY, '--version').split()[1]
        self.assertIn(f'"hcyclient {version}"', (FOLDER / 'hcy.1').read_text())


class Examples(unittest.TestCase):
    """Every example in a help and in the manual page does something."""

    def run_examples(self, text):
        lines = re.findall(r'^ *((?:HCY_\w+=\S+ |printf .* \| )?hcy (?:call|bench|list|show|encode) .*)', text, re.M)
        root = FOLDER.parents[1]
        path = ':'.join([str(pathlib.Path(HCY).parent), os.environ['PATH']])
        with LocalServer() as server, IndexServer() as index, \
                tempfile.TemporaryDirectory() as directory:
            (pathlib.Path(directory) / 'bodies').symlink_to(root / 'tests/golden/files')
            (pathlib.Path(directory) / 'examples').symlink_to(root / 'examples')
            for line in lines:
                answering = index if ' list ' in line else server
                command = line.replace('http://127.0.0.1:8080', answering.url)
                done = subprocess.run(['bash', '-c', command], cwd=directory, check=False, text=True,
                                      env=dict(os.environ, PATH=path, no_proxy='*'),
                                      stdin=subprocess.DEVNULL, capture_output=True)
                self.assertEqual((line, done.returncode, done.stderr), (line, 0, ''))
                self.assertNotEqual(done.stdout, '', line)
        return len(lines)

    def test_of_every_help(self):
        for command in ((), *((command,) for command in COMMANDS)):
            shown = output_of(HCY, *command, '--help')
            self.assertEqual(output_of(HCY, 'help', *command), shown)
            self.assertGreater(self.run_examples(shown.split('Examples:')[1]), 0)

    def test_of_the_manual(self):
        page = output_of('groff', '-t', '-man', '-Tascii', '-P-cbou', '-rLL=200n', FOLDER / 'hcy.1')
        self.assertGreater(self.run_examples(page.split('EXAMPLES')[1]), 3)


class ServerExamples(unittest.TestCase):
    """Every example in the help and in the manual page of hcy-local-server serves."""

    SCALE = """import json, sys
for line in sys.stdin:
    a, k = json.loads(line)['inputs']
    print(json.dumps({'outputs': [[x * k for x in a]]}), flush=True)
"""
    # What is called on the server of an example, by the option that it is about.
    CALLS = {'--port': ('math/plus', '2', '3'), '--fault': ('text/upper', '"a"'),
             '--function': ('my/scale', '[1,2]', '10'), '--record': ('math/plus', '[1,2]', '3'),
             '--replay': ('math/plus', '[1,2]', '3')}
    ANSWERS = {'--port': '5', '--fault': '"A"', '--function': '[10,20]', '--record': '[4,5]',
               '--replay': '[4,5]'}

    def run_examples(self, text):
        lines = re.findall(r'^ *(?:\$ )?(hcy-local-server .*)', text, re.M)
        shown = [next(option for option in self.CALLS if f'{option} ' in line) for line in lines]
        self.assertEqual(set(shown), set(self.CALLS))
        with LocalServer() as upstream, tempfile.TemporaryDirectory() as directory:
            pathlib.Path(directory, 'scale.py').write_text(self.SCALE)
            for option, line in zip(shown, lines):
                self.assertEqual(self.called(option, line, upstream, directory),
                                 self.ANSWERS[option], line)
            self.assertEqual(len(list(pathlib.Path(directory, 'calls').glob('*math-plus*'))), 1)

    def called(self, option, line, upstream, directory):
        command = line.replace('https://lab.example', upstream.url).replace(
            'hcy-local-server', os.environ['HCY_LOCAL_SERVER'])
        with subprocess.Popen(['bash', '-c', f'exec {command} --port 0 --stop-on-eof'], text=True,
                              cwd=directory, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL) as server:
            url = re.fullmatch(r'listening on (http://\S+)\n', server.stdout.readline())[1]
            with urllib.request.urlopen(url + '/healthz') as health:
                self.assertEqual(health.read().strip(), b'ok')
            function, *arguments = self.CALLS[option]
            answer = output_of(HCY, 'call', f'{url}/{function}', *arguments, '--json')
            server.stdin.close()
            self.assertEqual(server.wait(30), 0)
        return answer.strip()

    def test_of_the_help(self):
        shown = output_of(os.environ['HCY_LOCAL_SERVER'], '--help')
        self.run_examples(shown.split('Examples:')[1])
        # Without what the parser of the options calls their types.
        self.assertNotRegex(shown, r'TEXT|U?INT|FLOAT|\{.*\}|Needs:')

    def test_of_the_manual(self):
        page = output_of('groff', '-t', '-man', '-Tascii', '-P-cbou', '-rLL=200n',
                         FOLDER.parents[1] / 'server/hcy-local-server.1')
        self.run_examples(page.split('EXAMPLES')[1].split('SEE ALSO')[0])


if __name__ == '__main__':
    unittest.main()
