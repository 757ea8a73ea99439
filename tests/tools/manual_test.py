#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The manual page of hcy knows the options that the program has, and every example runs."""
import os
import pathlib
import re
import subprocess
import tempfile
import unittest

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
        lines = re.findall(r'^ *((?:HCY_\w+=\S+ )?hcy (?:call|bench|list|show|encode) .*)', text, re.M)
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


if __name__ == '__main__':
    unittest.main()
