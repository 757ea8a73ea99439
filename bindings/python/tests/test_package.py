# SPDX-License-Identifier: Apache-2.0
"""Installed by pip from the folder, without the net."""
import os
import pathlib
import shutil
import subprocess
import sys

import pytest

FOLDER = pathlib.Path(__file__).resolve().parent.parent


@pytest.fixture(scope='module')
def installed(tmp_path_factory):
    """The directory; pip writes into the folder that it installs from."""
    copy = shutil.copytree(FOLDER, tmp_path_factory.mktemp('source') / 'python')
    target = tmp_path_factory.mktemp('installed')
    subprocess.run([sys.executable, '-m', 'pip', 'install', '--quiet', '--no-build-isolation',
                    '--no-index', '--no-deps', '--target', target, copy], check=True)
    return target


def test_it_holds_what_it_should(installed):
    names = {path.name for path in (installed / 'hcyclient').iterdir()} - {'__pycache__'}
    assert names == {path.name for path in (FOLDER / 'hcyclient').iterdir()} - {'__pycache__'}
    assert 'py.typed' in names
    assert (installed / 'hcyclient-1.1.0.dist-info').is_dir()


def test_it_calls(installed, server):
    outcome = subprocess.run([sys.executable, '-c', '''
import sys, hcyclient
with hcyclient.Client() as client:
    print(hcyclient.__file__, client.feval(sys.argv[1] + '/math/plus', 2, 3).item())
''', server], env={**os.environ, 'PYTHONPATH': str(installed)}, cwd='/', check=True,
        stdout=subprocess.PIPE, text=True)
    assert outcome.stdout == f'{installed}/hcyclient/__init__.py 5.0\n'


def test_its_types_are_seen(installed, tmp_path):
    (tmp_path / 'user.py').write_text('import hcyclient\nhcyclient.Client(tls=True)\n')
    # NumPy's own types take mypy most of a minute.
    (tmp_path / 'mypy.ini').write_text('[mypy]\n[mypy-numpy.*]\nfollow_imports = skip\n')
    outcome = subprocess.run(
        ['mypy', '--cache-dir', tmp_path / 'cache', tmp_path / 'user.py'],
        env={**os.environ, 'MYPYPATH': '', 'PYTHONPATH': str(installed)}, cwd=tmp_path,
        stdout=subprocess.PIPE, text=True)
    assert 'Unexpected keyword argument "tls"' in outcome.stdout


def test_the_version_is_that_of_the_library():
    import hcyclient
    project = (FOLDER.parent.parent / 'CMakeLists.txt').read_text()
    assert f'VERSION {hcyclient.__version__} ' in project
    assert f'version = "{hcyclient.__version__}"' in (FOLDER / 'pyproject.toml').read_text()


def test_a_numpy_whose_arrays_cannot_be_subscripted():
    """Before 1.22."""
    subprocess.run([sys.executable, '-c', '''
import numpy
numpy.ndarray = type('ndarray', (numpy.ndarray,), {'__class_getitem__': None})
import hcyclient
'''], check=True)


def test_it_is_written_for_the_oldest_python_that_it_names():
    """The syntax, at least; mypy checks what of the standard library is there."""
    import ast
    for file in (FOLDER / 'hcyclient').glob('*.py'):
        ast.parse(file.read_text(), feature_version=(3, 9))
