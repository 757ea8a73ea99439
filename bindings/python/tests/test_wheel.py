# SPDX-License-Identifier: Apache-2.0
"""A wheel that holds the shared library; here, the library that the tests use."""
import os
import pathlib
import platform
import subprocess
import sys
import zipfile

import pytest

FOLDER = pathlib.Path(__file__).resolve().parent.parent
MODULES = {'hcyclient/' + path.name for path in (FOLDER / 'hcyclient').iterdir()
           if path.suffix == '.py' or path.name == 'py.typed'}
INFO = 'hcyclient-1.1.0.dist-info/'


@pytest.fixture(scope='module')
def wheel(tmp_path_factory):
    output, licences = tmp_path_factory.mktemp('wheel'), tmp_path_factory.mktemp('licences')
    for name in ('LICENSE', 'LICENSE.other'):
        (licences / name).write_text(f'The text of {name}\n')
    subprocess.run([sys.executable, FOLDER / 'make_wheel.py', os.environ['HCYCLIENT_LIBRARY'],
                    licences, output], check=True)
    (made,) = output.iterdir()
    return made


def test_its_name_says_where_it_can_be_installed(wheel):
    assert wheel.name == f'hcyclient-1.1.0-py3-none-linux_{platform.machine()}.whl'


def test_it_holds_what_it_should(wheel):
    with zipfile.ZipFile(wheel) as archive:
        # Newer versions of setuptools put the licences into a folder.
        licences = INFO if INFO + 'LICENSE' in archive.namelist() else INFO + 'licenses/'
        names = set(archive.namelist())
        description = archive.read(INFO + 'WHEEL').decode()
        metadata = archive.read(INFO + 'METADATA').decode()
        plugin = archive.read(INFO + 'entry_points.txt').decode()
        assert archive.read(licences + 'LICENSE.other') == b'The text of LICENSE.other\n'
    assert names == MODULES | {'hcyclient/libhcyclient.so.1'} | {INFO + name for name in (
        'METADATA', 'RECORD', 'WHEEL', 'entry_points.txt', 'top_level.txt')} | {
        licences + name for name in ('LICENSE', 'LICENSE.other')}
    assert 'Root-Is-Purelib: false' in description
    assert f'Tag: py3-none-linux_{platform.machine()}' in description
    for line in ('Name: hcyclient', 'Version: 1.1.0', 'Requires-Python: >=3.10',
                 'Requires-Dist: numpy', 'License: Apache-2.0'):
        assert line in metadata
    assert 'hcyclient = hcyclient.testing_plugin' in plugin


def test_its_library_is_used(wheel, server, tmp_path):
    subprocess.run([sys.executable, '-m', 'pip', 'install', '--quiet', '--no-index', '--no-deps',
                    '--target', tmp_path, wheel], check=True)
    environment = {**os.environ, 'PYTHONPATH': str(tmp_path)}
    del environment['HCYCLIENT_LIBRARY']
    outcome = subprocess.run([sys.executable, '-c', '''
import sys, hcyclient
with hcyclient.Client(sys.argv[1]) as client:
    print(client.math.plus(2, 3))
print([line.split()[-1] for line in open('/proc/self/maps') if 'libhcyclient' in line][0])
''', server], env=environment, cwd='/', check=True, stdout=subprocess.PIPE, text=True)
    assert outcome.stdout == f'5.0\n{tmp_path}/hcyclient/libhcyclient.so.1\n'
