# SPDX-License-Identifier: Apache-2.0
"""HCY_LOCAL_SERVER names the program of the local server; it ends with the tests."""
import contextlib
import os
import subprocess

import hypothesis
import pytest

# libcurl would send calls to a server on this machine through a proxy.
for _name in list(os.environ):
    if _name.lower().endswith('_proxy'):
        del os.environ[_name]

os.environ.pop('HCY_SERVER', None)  # tests name their servers

import hcyclient  # noqa: E402

# The same examples each time, unless HCY_RANDOM is set: then other ones.
hypothesis.settings.register_profile('server', deadline=None, database=None, print_blob=True,
                                     derandomize=not os.environ.get('HCY_RANDOM'))
hypothesis.settings.load_profile('server')


@contextlib.contextmanager
def local_server(*options):
    """The URL of a server of one's own."""
    command = [os.environ['HCY_LOCAL_SERVER'], '--port', '0', '--stop-on-eof', *options]
    with subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                          text=True) as process:
        yield process.stdout.readline().split()[2]
        process.stdin.close()


@pytest.fixture(scope='session')
def server():
    with local_server() as url:
        yield url


@pytest.fixture(scope='session')
def session_client():
    with hcyclient.Client(results='exact') as client:
        yield client


@pytest.fixture
def client():
    """Its results are exact, so that tests see all that came."""
    with hcyclient.Client(results='exact') as made:
        yield made


@pytest.fixture(scope='session')
def echo(server, session_client):
    return session_client.function(server + '/echo')
