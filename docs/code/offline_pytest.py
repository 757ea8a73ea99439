#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Fixtures of pytest. Usage: offline_pytest.py SERVER_URL"""
import pytest


@pytest.fixture
def hcy_functions():
    return {'my/scale': lambda a, k: a * k}

def test_scale(hcy_server, hcy_client):
    assert hcy_client.feval(hcy_server.url('my/scale'), 2, 10) == 20

@pytest.mark.hcy_replay('sums')
def test_sum(hcy_server, hcy_client):
    assert hcy_client.feval(hcy_server.url('math/plus'), 2, 3) == 5


if __name__ == '__main__':
    import os
    import shutil
    import subprocess
    import sys

    os.environ.setdefault('HCY_LOCAL_SERVER',
                          os.path.abspath('build/release/server/hcy-local-server'))
    shutil.copy(__file__, 'test_scale.py')

    def summary(*arguments):
        done = subprocess.run([sys.executable, '-m', 'pytest', '-q', '-p', 'no:cacheprovider',
                               '-p', 'hcyclient.testing_plugin', *arguments, 'test_scale.py'],
                              capture_output=True, text=True, check=False)
        return done.stdout.splitlines()[-1].split(' in ')[0]

    print(summary())
    print(summary('--hcy-upstream', sys.argv[1]))
    print(summary())
