# SPDX-License-Identifier: Apache-2.0
"""The library by its Python face: does what bench/client_main.cc does, for one thread.

The application holds its data in values of Python, of which an array is made and filled for every
call, as by library_filling.
"""

import ctypes
import gc
import pathlib
import statistics
import sys
import time

import numpy as np

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "bindings/python"))
import hcyclient  # noqa: E402

MEBI = 1 << 20
NAMED = {"W1": ("double", 1), "W2": ("double", MEBI // 8), "W3": ("double", 4 * MEBI),
         "W4": ("int16", 4 * MEBI), "W5": ("cell", 100_000), "W6": ("text", MEBI),
         "W7": ("uint64", 4 * MEBI), "W8": ("int64", 4 * MEBI), "W9": ("ascii", MEBI)}


def scattered(count):
    """The same numbers as in workload.cc."""
    return mixed(np.arange(1, count + 1, dtype=np.uint64))


def mixed(numbers):
    bits = numbers * np.uint64(0x9E3779B97F4A7C15)
    bits = (bits ^ (bits >> np.uint64(30))) * np.uint64(0xBF58476D1CE4E5B9)
    return bits ^ (bits >> np.uint64(27))


def column(kind, count):
    bits = scattered(count)
    if kind == "double":
        return np.ldexp((bits >> np.uint64(11)).astype(float), -53).reshape(-1, 1)
    if kind == "int16":
        return bits.astype(np.uint16).view(np.int16).reshape(-1, 1)
    if kind in ("uint64", "int64"):
        highest = np.uint64(1) << bits % np.uint64(10) * np.uint64(7) % np.uint64(64)
        values = highest | (mixed(bits + np.uint64(1)) & (highest - np.uint64(1)))
        if kind == "int64":
            values = np.where(bits >> np.uint64(63), ~(values >> np.uint64(1)), values >> np.uint64(1))
        return values.astype(kind).reshape(-1, 1)
    if kind in ("ascii", "text"):
        units = bits % np.uint64(95) + np.uint64(32)
        if kind == "text":
            bits >>= np.uint64(8)
            kinds, codes = bits % np.uint64(100), bits // np.uint64(100)
            units = np.where(kinds >= 98, 0x800 + codes % np.uint64(0xC800), np.where(
                kinds >= 90, 0x80 + codes % np.uint64(0x780), units))
        return units.astype("<u2").tobytes().decode("utf-16-le")
    if kind == "cell":
        cells = np.empty((count, 1), object)
        cells[:, 0] = column("double", count)[:, 0].tolist()
        return cells
    raise ValueError(f"no workload of kind {kind}")


def workload(text):
    kind, count = NAMED.get(text) or text.split(":")
    return column(kind, int(count))


def equal(result, sent):
    if isinstance(sent, str):
        return isinstance(result, str) and result == sent
    if result.shape != sent.shape or result.dtype != sent.dtype:
        return False
    if sent.dtype == object:
        return all(element.shape == (1, 1) and element[0, 0] == number
                   for element, number in zip(result[:, 0], sent[:, 0]))
    return np.array_equal(result, sent)


def median_and_sum(function, value, count):
    times = []
    start = time.perf_counter_ns()
    for _ in range(count):
        before = time.perf_counter_ns()
        result = function(value)
        del result
        times.append(time.perf_counter_ns() - before)
    together = time.perf_counter_ns() - start
    return round(statistics.median_high(times)), together


def status_line(name):
    for line in pathlib.Path("/proc/self/status").read_text(encoding="ascii").splitlines():
        if line.startswith(name + ":"):
            return int(line.split()[1])
    raise RuntimeError(f"no {name} in /proc/self/status")


def start_peak():
    """What is resident; from here on the peak counts anew."""
    gc.collect()
    ctypes.CDLL(None).malloc_trim(0)
    pathlib.Path("/proc/self/clear_refs").write_text("5", encoding="ascii")
    return status_line("VmRSS")


def main():
    port, name = sys.argv[1:3]
    if sys.argv[3:] not in ([], ["1"]):
        raise SystemExit("python_client: one thread is all that it knows")
    value = workload(name)
    with hcyclient.Client(response_size_limit=2**31 - 1, results="exact") as client:
        function = client.function(f"http://127.0.0.1:{port}/echo")
        before = start_peak()
        for line in sys.stdin:
            command, *count = line.split()
            if command == "check":
                if not equal(function(value), value):
                    raise RuntimeError("the reply is not what was sent")
                print("ok", flush=True)
            elif command == "run":
                print(*median_and_sum(function, value, int(count[0])), flush=True)
            elif command == "memory":
                print(before, status_line("VmHWM"), flush=True)
            else:
                raise RuntimeError(f"no command: {command}")


if __name__ == "__main__":
    main()
