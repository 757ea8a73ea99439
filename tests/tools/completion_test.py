#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What bash, zsh and fish offer for a word that is being written."""
import json
import os
import pathlib
import re
import string
import subprocess
import tempfile
import unittest
import unittest.mock

from index_server import IndexServer
from pseudo_terminal import PseudoTerminal

HCY = os.environ['HCY_PROGRAM']
FOLDER = pathlib.Path(__file__).resolve().parents[2] / 'tools/hcy'
COMMANDS = ('call', 'bench', 'list', 'encode', 'show')
WORDS = ('double', 'single', 'int8', 'int16', 'int32', 'int64', 'uint8', 'uint16', 'uint32',
         'uint64', 'logical', 'char', 'struct', 'cell', 'complex', 'sparse', 'float64', 'float32',
         'bool', 'complex64', 'complex128', 'json', 'text', 'csv', 'tsv', 'npy')
FUNCTIONS = ('math/plus', 'text/upper', 'echo')
SERVERS = ('@lab', '@my lab', '@odd', '@secret')
# What a shell would run if it expanded the word.
ODD_NAME = '$(touch pwned)`touch pwned`'

# What is typed, and what then stands there, in every shell.
SHOWN = {
    'hcy ca\t': 'hcy call ',
    'hcy se\t': 'hcy serve ',
    'hcy help be\t': 'hcy help bench ',
    'hcy call u --no-verify-p\t': 'hcy call u --no-verify-peer ',
    'hcy call ma\t': 'hcy call math/plus ',
    'hcy call @la\t': 'hcy call @lab/',
    'hcy call @lab/te\t': 'hcy call @lab/text/upper ',
    'hcy call @odd/\t': r'hcy call @odd/\$\(touch\ pwned\)\`touch\ pwned\` ',
    'hcy call @secret/ma\t': 'hcy call @secret/ma',
    'hcy call @my\t': r'hcy call @my\ lab/',
    r'hcy call @my\ lab/ma' '\t': r'hcy call @my\ lab/math/plus ',
    'hcy call @lab te\t': 'hcy call @lab text/upper ',
    'hcy bench -v --calls 5 ma\t': 'hcy bench -v --calls 5 math/plus ',
    'hcy bench echo --against @lab/te\t': 'hcy bench echo --against @lab/text/upper ',
    'hcy call URL/te\t': 'hcy call URL/text/upper ',
    'hcy list @la\t': 'hcy list @lab ',
    'hcy help se\t': 'hcy help serve ',
    'hcy call u @da\t': 'hcy call u @data.json ',
    'hcy call u int8:@da\t': 'hcy call u int8:@data.json ',
    'hcy call u @tw\t': r'hcy call u @two\ words.json ',
    'hcy call u @fo\t': 'hcy call u @folder/',
    'hcy call u int1\t': 'hcy call u int16:',
    'hcy call u --ca da\t': 'hcy call u --ca data.json ',
    'hcy show da\t': 'hcy show data.json '}


def options_of(command):
    """The long options in the help."""
    shown = subprocess.run([HCY, command, '--help'], capture_output=True, text=True,
                           check=True).stdout
    names = re.findall(r'^ +((?:-[\w-]+,? *)+)', shown, re.M)
    return set(re.findall(r'--[\w-]+', ' '.join(names)))


class Completion(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.server = IndexServer()
        cls.odd_server = IndexServer(json.dumps({'functions': [{'name': ODD_NAME}]}))
        cls.directory = tempfile.TemporaryDirectory()
        cls.folder = pathlib.Path(cls.directory.name)
        for name in ('data.json', 'two words.json'):
            (cls.folder / name).touch()
        (cls.folder / 'folder').mkdir()
        (cls.folder / 'config.toml').write_text(
            f'[servers.lab]\nurl = "{cls.server.url}"\n'
            f'[servers.odd]\nurl = "{cls.odd_server.url}"\n'
            f'[servers."my lab"]\nurl = "{cls.server.url}"\n'
            f'[servers.secret]\nurl = "{cls.server.url}"\nask-key-pass = true\n')
        cls.environment = dict(
            os.environ, PATH=f'{pathlib.Path(HCY).parent}:{os.environ["PATH"]}', TERM='dumb',
            HOME=cls.directory.name, HCY_CONFIG=str(cls.folder / 'config.toml'), PS1='> ',
            HCY_SERVER=cls.server.url, INPUTRC='/dev/null', no_proxy='*')

    @classmethod
    def tearDownClass(cls):
        cls.server.__exit__()
        cls.odd_server.__exit__()
        cls.directory.cleanup()

    def output_of(self, *arguments):
        return subprocess.run(arguments, capture_output=True, text=True, check=True,
                              cwd=self.directory.name, env=self.environment).stdout

    @staticmethod
    def plain(names):
        return {name.replace('\\', '') for name in names}

    def require_all(self, completed):
        """`completed` tells what is offered for the last word of a line."""
        for command in COMMANDS:
            self.assertEqual(completed('hcy', command, 'x', '--'), options_of(command))
        self.assertEqual(completed('hcy', 'help', ''), {*COMMANDS, 'serve'})
        for words in (['call'], ['call', '-v'], ['call', '-n', '2'], ['call', '@lab'],
                      ['bench', '@lab', '--calls', '9'], ['bench', 'x', '--against']):
            self.assertEqual(completed('hcy', *words, ''), set(FUNCTIONS))
        self.assertEqual(completed('hcy', 'call', 'x', ''), set())
        self.assertEqual(self.plain(completed('hcy', 'call', '@')),
                         {name + '/' for name in SERVERS})
        for words in (['list'], ['list', '--raw']):
            self.assertEqual(self.plain(completed('hcy', *words, '')), set(SERVERS))
        self.assertEqual(completed('hcy', 'call', self.server.url + '/te'),
                         {self.server.url + '/text/upper'})
        self.assertEqual(completed('hcy', 'call', '@lab/m'), {'@lab/math/plus'})
        self.assertEqual(self.plain(completed('hcy', 'call', '@odd/')), {'@odd/' + ODD_NAME})
        self.assertFalse((self.folder / 'pwned').exists())
        offered = set().union(*(completed('hcy', 'call', 'x', letter)
                                for letter in string.ascii_lowercase))
        self.assertEqual(offered, {name + ':' for name in WORDS})

    def test_bash(self):
        def completed(*words):
            script = f"""source {FOLDER}/hcy.bash
                COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); COMP_LINE="$*"
                COMP_POINT=${{#COMP_LINE}}
                _hcy hcy "${{@: -1}}"; printf '%s\\n' "${{COMPREPLY[@]}}" """
            return set(self.output_of('bash', '-c', script, 'bash', *words).split('\n')) - {''}

        self.require_all(completed)
        self.assertEqual(completed('hcy', ''), {*COMMANDS, 'serve', 'help', '--help', '--version'})
        self.assertEqual(completed('hcy', 'call', 'x', '--timeout', ''), set())

    def test_fish(self):
        def completed(*words):
            script = f'source {FOLDER}/hcy.fish; complete -C "{" ".join(words)}"'
            lines = self.output_of('fish', '--no-config', '-c', script).split('\n')
            return {line.split('\t')[0] for line in lines} - {''}

        self.require_all(completed)
        self.assertEqual(completed('hcy', ''), {*COMMANDS, 'serve', 'help'})
        self.assertEqual(completed('hcy', 'call', 'u', '@da'), {'@data.json'})
        self.assertEqual(completed('hcy', 'call', 'u', '--ca', 'da'), {'data.json'})

    def require_shown(self, shell, start):
        with unittest.mock.patch.dict(os.environ, self.environment, clear=True), \
                PseudoTerminal(shell, 200) as terminal:
            terminal.type(f'cd {self.directory.name}; {start}; echo re""ady\n')
            terminal.read_until('ready\r\n[^\n]*> ')
            for typed, shown in SHOWN.items():
                typed, shown = (text.replace('URL', self.server.url) for text in (typed, shown))
                terminal.output = ''
                terminal.type(typed + '#')
                terminal.read_until('#')
                self.assertEqual(self.line(terminal.output), shown + '#')
                terminal.type('\x15echo ne""xt\n')  # in place of the line
                terminal.read_until('next\r\n[^\n]*> ')
        self.assertFalse((self.folder / 'pwned').exists())

    def test_lines_in_bash(self):
        self.require_shown(['bash', '--norc', '--noprofile', '-i'], f'source {FOLDER}/hcy.bash')

    def test_lines_in_zsh(self):
        self.require_shown(['zsh', '-f', '-i', '-o', 'no_prompt_sp', '-o', 'no_prompt_cr'],
                           'unsetopt zle_bracketed_paste; autoload -U compinit; compinit -D -u; '
                           f'source {FOLDER}/hcy.zsh')

    def test_brackets_in_zsh(self):
        """The alias that hcy.zsh recommends passes them on, and completion still works."""
        alias = re.search(r"^# +(alias hcy=.*)$", (FOLDER / 'hcy.zsh').read_text(), re.M)[1]
        with unittest.mock.patch.dict(os.environ, self.environment, clear=True), \
                PseudoTerminal(['zsh', '-f', '-i', '-o', 'no_prompt_sp'], 200) as terminal:
            def require_shown(typed, shown):
                terminal.output = ''
                terminal.type(typed)
                terminal.read_until(shown)

            require_shown('unsetopt zle_bracketed_paste; autoload -U compinit; compinit -D -u; '
                          f'source {FOLDER}/hcy.zsh; echo re""ady\n', 'ready\r\n[^\n]*> ')
            require_shown('hcy encode [1,2]\n', r'no matches found: \[1,2\]\r\n[^\n]*> ')
            require_shown(f'{alias}; echo do""ne\n', 'done\r\n[^\n]*> ')
            require_shown('hcy encode [1,2] | hcy show -\n', r'\n\[\[1,2\]\]\r\n[^\n]*> ')
            require_shown('hcy call ma\t#', r'math/plus [^\n]*#')

    def test_options_in_zsh(self):
        """What zsh would offer, by a compadd and a _describe of our own."""
        script = f"""function compdef() {{ }}; function compadd() {{ }}
            function _describe() {{ print -l -- ${{(P)2%%:*}} }}
            source {FOLDER}/hcy.zsh; words=("$@"); CURRENT=$#; PREFIX=${{words[-1]}}; _hcy"""
        for command in COMMANDS:
            offered = self.output_of('zsh', '-f', '-c', script, 'zsh', 'hcy', command, 'x', '--')
            self.assertEqual(set(offered.split('\n')) - {''}, options_of(command))

    @staticmethod
    def line(output):
        """The line as it stands, where backspaces went over what was there."""
        line = []
        position = 0
        for character in re.sub(r'\x1b\[[0-9;?]*[A-Za-z]|\x1b[=>]|\a', '', output):
            if character == '\b':
                position -= 1
            else:
                line[position:position + 1] = character
                position += 1
        return ''.join(line[:position])


if __name__ == '__main__':
    unittest.main()
