# SPDX-License-Identifier: Apache-2.0
"""Runs the benchmarks that need no network; started by script/bench --micro and --growth."""

import json
import subprocess


def run(directory, program, pattern="."):
    """Of each operation: the nanoseconds that it takes, its allocations, and its bytes a second
    where it works on a text."""
    output = subprocess.run(
        [directory / program, "--benchmark_filter=" + pattern, "--benchmark_min_time=0.1",
         "--benchmark_format=json"], check=True, stdout=subprocess.PIPE, text=True).stdout
    return {
        benchmark["name"]: {
            "nanoseconds": benchmark["cpu_time"],
            "allocations": benchmark["allocations"],
            "bytes_per_second": benchmark.get("bytes_per_second"),
        }
        for benchmark in json.loads(output)["benchmarks"]
    }


def columns(found):
    if found is None:
        return ["", "", ""]
    rate = found["bytes_per_second"]
    return [f"{found['nanoseconds']:.3g}", f"{found['allocations']:.4g}",
            "" if rate is None else f"{rate / 1e9:.3g}"]


def measure(directory):
    # The fields of struct arrays are a table of their own, of how cost grows.
    library = run(directory, "bench-micro-library", "-^fields/")
    cpp = run(directory, "bench-micro-cpp")
    message = run(directory, "bench-micro-message")
    print("\nWithout network: processor time of an operation of the library, of the same by its C++ "
          "face, and done on a plain message\n")
    print("| operation |" + "".join(f" {name}, ns | allocations | GB/s |"
                                    for name in ("library", "cpp", "message")))
    print("| --- |" + " ---: |" * 9)
    for name, found in library.items():
        print("| " + " | ".join([name] + columns(found) + columns(cpp.get(name))
                                + columns(message.get(name))) + " |")
    print(f"\nA 1-by-1 double is created and destroyed within "
          f"{library['create/scalar/1']['allocations']:.0f} allocations.")
    return {"library": library, "cpp": cpp, "message": message}
