# SPDX-License-Identifier: Apache-2.0
"""examples/python/tables.ipynb, run without a browser."""
import base64
import pathlib

import pytest

EXAMPLES = pathlib.Path(__file__).resolve().parents[3] / 'examples/python'

nbclient = pytest.importorskip('nbclient', reason='the package python3-nbclient is not installed')
pytest.importorskip('ipykernel', reason='the package python3-ipykernel is not installed')


def test_tables(server, monkeypatch):
    import nbformat
    monkeypatch.setenv('HCY_SERVER', server)
    notebook = nbformat.read(EXAMPLES / 'tables.ipynb', as_version=4)
    nbclient.NotebookClient(notebook, timeout=120, kernel_name='python3',
                            resources={'metadata': {'path': str(EXAMPLES)}}).execute()
    outputs = [output.data for cell in notebook.cells if cell.cell_type == 'code'
               for output in cell.outputs if 'data' in output]
    summary, fit, largest = (data['text/plain'] for data in outputs[1:4])
    assert 'median' in summary and '36' in summary
    assert '-0.262323' in fit and '1.002117' in fit and '0.884796' in fit
    assert 'residual' in largest
    (picture,) = (data['image/png'] for data in outputs if 'image/png' in data)
    assert base64.b64decode(picture).startswith(b'\x89PNG') and len(picture) > 10000
