# SPDX-License-Identifier: Apache-2.0
"""Measures how cost grows with size; started by script/bench --growth."""

import statistics

import micro

BYTES = [4 ** power * 1024 for power in range(11)]
ELEMENTS = [10 ** power for power in range(7)]
THREADS = range(1, 9)

# How long a turn takes at least, where a single call does not take longer.
TURN = 0.1
TURNS = 5


def turns(client):
    """The medians of several turns, and the rates of calls a second on all threads together."""
    client.check()
    once = client.run(1)[0]
    calls = max(1, int(TURN / once))
    found = [client.run(calls) for _ in range(TURNS)]
    client.check()
    return statistics.median(median for median, _ in found), statistics.median(
        calls / together for _, together in found)


def seconds_a_call(bench, name, workload):
    with bench.client(name, workload) as client:
        return turns(client)[0]


def calls_a_second(bench, name, workload, threads):
    with bench.client(name, workload, threads) as client:
        return threads * turns(client)[1]


def table(title, head, rows):
    print(f"\n{title}\n")
    print("| " + " | ".join(head) + " |")
    print("| --- |" + " ---: |" * (len(head) - 1))
    for row in rows:
        print("| " + " | ".join(row) + " |", flush=True)


def size_text(size):
    for unit, scale in (("GiB", 2 ** 30), ("MiB", 2 ** 20), ("KiB", 2 ** 10)):
        if size >= scale:
            return f"{size // scale} {unit}"
    return f"{size} bytes"


def sizes(bench, names, title, label, points, workload, text, scale, unit):
    """One table: for each client what a call takes, and how much of it a unit of the size."""
    found = []

    def rows():
        for point in points:
            seconds = {name: seconds_a_call(bench, name, workload(point)) for name in names}
            found.append({"size": point, "seconds": seconds})
            yield [text(point)] + [
                cell for value in seconds.values()
                for cell in (f"{value * 1e3:.4g}", f"{value / point * scale:.3g}")]

    head = [label] + [cell for name in names for cell in (f"{name}, ms", unit)]
    table(title, head, rows())
    return found


def threads(bench, names):
    found = []

    def rows():
        for count in THREADS:
            rates = {f"{name} {workload}": calls_a_second(bench, name, workload, count)
                     for workload in ("W1", "W2") for name in names}
            found.append({"threads": count, "calls_a_second": rates})
            yield [str(count)] + [f"{rate:.0f}" for rate in rates.values()]

    head = ["threads"] + [f"{name} {workload}, calls/s"
                          for workload in ("W1", "W2") for name in names]
    table("Threads with a context each", head, rows())
    return found


def fields(bench):
    """Struct arrays, without network."""
    found = {}
    for name, result in micro.run(bench.directory, "bench-micro-library", "^fields/").items():
        _, operation, count = name.split("/")
        found.setdefault(int(count), {})[operation] = result["nanoseconds"]
    operations = list(next(iter(found.values())))
    table("A 1-by-1 struct array with that many fields: ns for each of its fields",
          ["fields"] + operations,
          ([str(count)] + [f"{found[count][operation] / count:.3g}" for operation in operations]
           for count in sorted(found)))
    return found


def measure(bench):
    names = [name for name in ("floor", "by_hand", "library") if name in bench.names]
    return {
        "bytes": sizes(bench, names, "A column of doubles", "size", BYTES,
                       lambda size: f"double:{size // 8}", size_text, 1e9 * 1024,
                       "ns/KiB"),
        "cells": sizes(bench, names, "A cell of 1-by-1 doubles", "elements", ELEMENTS,
                       lambda count: f"cell:{count}", str, 1e9, "ns/element"),
        "fields": fields(bench),
        "threads": threads(bench, names),
    }
