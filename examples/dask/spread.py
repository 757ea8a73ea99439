#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Spreads calls over the workers of a Dask cluster.

Usage: spread.py SERVER_URL CALLS [SCHEDULER]
  SERVER_URL  the server, such as http://127.0.0.1:8080; if there are several, their proxy
  CALLS       number of calls to make
  SCHEDULER   address of the cluster's scheduler; by default, a cluster on this machine is started.
              The workers need hcyclient, too.
"""
from __future__ import annotations

import sys
from typing import Any, Sequence

import distributed
import hcyclient

CALLS_OF_A_TASK = 50


def call_part(server: str, numbers: Sequence[float]) -> list[float]:
    """A task: makes a part of the calls, eight at a time. Opening connections takes little of the
    time of so many calls, and no client stays open in the worker."""
    with hcyclient.Client(server, connections=8) as client:
        return [float(found) for found in client.map('math/plus', numbers, numbers)]


def start_calls(cluster: distributed.Client, server: str, numbers: Sequence[float]) -> list[Any]:
    """The tasks, in order. Dask repeats a task if its worker dies. It also repeats a task, up to
    `retries` times, if the task raises an exception, for example because a connection broke. So
    each call runs at least once, and may run twice."""
    parts = [numbers[i:i + CALLS_OF_A_TASK] for i in range(0, len(numbers), CALLS_OF_A_TASK)]
    return list(cluster.map(call_part, [server] * len(parts), parts, pure=False, retries=5))


def results_of(cluster: distributed.Client, tasks: list[Any]) -> list[float]:
    return [found for part in cluster.gather(tasks) for found in part]


if __name__ == '__main__':
    server, count, *scheduler = sys.argv[1:]
    with distributed.Client(*scheduler) as cluster:
        numbers = [float(i) for i in range(int(count))]
        results = results_of(cluster, start_calls(cluster, server, numbers))
        print(f'{len(results)} results, the last one is {results[-1]}')
