#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Makes a wheel that holds the shared library.

Usage: make_wheel.py LIBRARY LICENCES OUTPUT_FOLDER
  LIBRARY        libhcyclient.so.1
  LICENCES       a folder with the licences that belong to it, in files named LICENSE*
  OUTPUT_FOLDER  where the wheel is written

No network is needed: setuptools and wheel are those of this interpreter.
"""
import pathlib
import shutil
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent


def main(library: str, licences: str, output: str) -> None:
    with tempfile.TemporaryDirectory() as directory:
        source = pathlib.Path(directory) / 'hcyclient'
        # pip writes into the folder that it builds.
        shutil.copytree(HERE, source, ignore=shutil.ignore_patterns(
            'tests', '__pycache__', 'build', '*.egg-info'))
        for licence in pathlib.Path(licences).glob('LICENSE*'):
            shutil.copy(licence, source)
        subprocess.run(['strip', '--strip-unneeded', '-o',
                        source / 'hcyclient/libhcyclient.so.1', library], check=True)
        subprocess.run([sys.executable, '-m', 'pip', 'wheel', '--quiet', '--no-build-isolation',
                        '--no-index', '--no-deps', '--wheel-dir', output, source], check=True)


main(*sys.argv[1:])
