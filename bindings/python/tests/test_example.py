# SPDX-License-Identifier: Apache-2.0
"""The example fits what it says, and draws the picture of the guide."""
import pathlib
import subprocess
import sys

from matplotlib.testing.compare import compare_images

ROOT = pathlib.Path(__file__).resolve().parents[3]
EXAMPLE = ROOT / 'examples/python/norris.py'


def test_norris(server, tmp_path):
    picture = tmp_path / 'norris.png'
    outcome = subprocess.run(
        [sys.executable, EXAMPLE, server, ROOT / 'examples/data/norris.csv', picture], check=True,
        stdout=subprocess.PIPE, text=True, cwd=tmp_path)
    assert outcome.stdout == EXAMPLE.with_suffix('.txt').read_text()
    # Other versions of the fonts differ in a few pixels.
    assert compare_images(ROOT / 'docs/norris.png', picture, tol=5) is None
