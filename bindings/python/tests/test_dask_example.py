# SPDX-License-Identifier: Apache-2.0
"""examples/dask loses no call when a worker and a server are killed."""
import os
import pathlib
import subprocess
import sys

import pytest

EXAMPLE = pathlib.Path(__file__).resolve().parents[3] / 'examples/dask/run'

pytest.importorskip('distributed', reason='the package python3-distributed is not installed')


def test_no_call_is_lost():
    outcome = subprocess.run([sys.executable, EXAMPLE, os.environ['HCY_LOCAL_SERVER'], '400'],
                             stdout=subprocess.PIPE, text=True, timeout=300)
    assert [line for line in outcome.stdout.splitlines() if ': ' not in line] == [
        'a worker was killed', 'a server was killed', '400 of 400 results are right']
    assert outcome.returncode == 0
