#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Fits a straight line on the server to the 36 observations of NIST's reference data set Norris,
compares the result with the certified one, and plots it.

Usage: norris.py SERVER_URL DATA_FILE PICTURE
  SERVER_URL  a running hcy-local-server, such as http://127.0.0.1:8080
  DATA_FILE   examples/data/norris.csv
  PICTURE     the PNG to write
"""
import sys
from typing import Any

import hcyclient
import matplotlib
import numpy as np
import numpy.typing as npt

matplotlib.use('Agg')
from matplotlib import pyplot  # noqa: E402

Vector = npt.NDArray[np.float64]
CERTIFIED = {'intercept': -0.262323073774029, 'slope': 1.00211681802045,
             'residual standard deviation': 0.884796396144373, 'R squared': 0.999993745883712}


def fit(server: str, x: Vector, y: Vector) -> dict[str, Any]:
    with hcyclient.Client(server, timeout=30) as client:
        coefficients, quality = client.stats.linear_fit(x, y, nargout=2)
    intercept, slope = coefficients
    return {'intercept': intercept, 'slope': slope,
            'residual standard deviation': quality['residualStandardDeviation'],
            'R squared': quality['rSquared']}


def draw(x: Vector, y: Vector, found: dict[str, Any], picture: str) -> None:
    _, (above, below) = pyplot.subplots(
        2, 1, sharex=True, figsize=(6.4, 5.2), height_ratios=(3, 2), layout='constrained')
    ends = np.array([x.min(), x.max()])
    above.plot(ends, found['intercept'] + found['slope'] * ends, color='tab:orange',
               label=f"y = {found['intercept']:.4f} + {found['slope']:.6f} x")
    above.plot(x, y, 'o', markersize=4, color='tab:blue', label='36 observations')
    above.set(ylabel='y', title='Norris: ozone monitors, fitted on the server')
    above.legend(frameon=False)

    deviation = found['residual standard deviation']
    below.axhspan(-deviation, deviation, color='tab:orange', alpha=0.15, linewidth=0,
                  label='\N{PLUS-MINUS SIGN} residual standard deviation')
    below.axhline(0, color='tab:orange')
    below.plot(x, y - (found['intercept'] + found['slope'] * x), 'o', markersize=4,
               color='tab:blue')
    below.set(xlabel='x', ylabel='residual', ylim=(-3.2, 3.2))
    below.legend(frameon=False, loc='lower left')
    for axes in (above, below):
        axes.grid(alpha=0.3)
        axes.spines[['top', 'right']].set_visible(False)
    pyplot.savefig(picture, dpi=100, metadata={'Software': None})


server, data_file, picture = sys.argv[1:]
y, x = np.loadtxt(data_file, delimiter=',', skiprows=4, unpack=True)
found = fit(server, x, y)
for name, certified in CERTIFIED.items():
    print(f'{name:27} {found[name]:13.10f}  certified {certified:13.10f}')
draw(x, y, found, picture)
