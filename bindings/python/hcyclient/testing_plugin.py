# SPDX-License-Identifier: Apache-2.0
"""Fixtures for pytest.

hcy_client      a Client, closed after the test
hcy_functions   the functions of hcy_server, a dictionary of callables by name; empty unless a test
                file overrides this fixture
hcy_server      a hcyclient.testing.Server with these functions, which is closed after the test

    @pytest.mark.hcy_replay('prices')
    def test_prices(hcy_server, hcy_client):
        hcy_client.feval(hcy_server.url('shop/prices'), 'EUR')

This mark makes hcy_server replay the calls in the folder recordings/prices next to the test file.
With `pytest --hcy-upstream URL`, calls that are not recorded yet are passed on to that server and
recorded.
"""
from __future__ import annotations

import pathlib
from collections.abc import Iterator, Mapping
from typing import Any, Callable, Optional

import pytest

import hcyclient
import hcyclient.testing

_MARKER = 'hcy_replay'


def pytest_addoption(parser: pytest.Parser) -> None:
    parser.getgroup('hcyclient').addoption(
        '--hcy-upstream', metavar='URL', default=None,
        help='URL of a server; if a test with the mark hcy_replay makes a call that is not '
             'recorded yet, the call is passed on to this server and recorded')


def pytest_configure(config: pytest.Config) -> None:
    config.addinivalue_line('markers', f'{_MARKER}(name): replay calls from the folder '
                                       'recordings/<name> next to the test file')


@pytest.fixture
def hcy_client() -> Iterator[hcyclient.Client]:
    """A client for this test only."""
    with hcyclient.Client() as client:
        yield client


@pytest.fixture
def hcy_functions() -> Mapping[str, Callable[..., Any]]:
    """The functions of hcy_server."""
    return {}


@pytest.fixture
def hcy_server(request: pytest.FixtureRequest, hcy_functions: Mapping[str, Callable[..., Any]]
               ) -> Iterator[hcyclient.testing.Server]:
    """A server for this test only."""
    marker = request.node.get_closest_marker(_MARKER)
    upstream: Optional[str] = request.config.getoption('--hcy-upstream')
    folder = _folder_of(marker, request) if marker else None
    if folder is not None and upstream is None and not folder.is_dir():
        pytest.fail(f'the folder {folder} does not exist: to record the calls, run pytest once '
                    'with --hcy-upstream URL', pytrace=False)
    records = folder is not None and upstream is not None
    with hcyclient.testing.Server(hcy_functions, replay=folder, record=folder if records else None,
                                  upstream=upstream if records else None) as server:
        yield server


def _folder_of(marker: pytest.Mark, request: pytest.FixtureRequest) -> pathlib.Path:
    if len(marker.args) != 1 or not isinstance(marker.args[0], str) or marker.kwargs:
        pytest.fail(f'the mark {_MARKER} takes one argument, the name of a recording',
                    pytrace=False)
    name = pathlib.PurePath(marker.args[0])
    if name.is_absolute() or not name.parts or '..' in name.parts:
        pytest.fail(f'not a valid name for a recording: {marker.args[0]!r}', pytrace=False)
    return pathlib.Path(request.path).parent / 'recordings' / name
