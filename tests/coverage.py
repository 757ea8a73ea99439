# SPDX-License-Identifier: Apache-2.0
"""Prints what llvm-cov counted, file by file, with each line and each outcome of a condition that no
test reached. Fails when there is such a line, or too few outcomes; started by script/coverage."""

import collections
import json
import os
import pathlib
import sys

LEAST_BRANCHES = 98.5

# It belongs to libhcyclient-server, which the tests of the library are not linked with; the tests of
# the server run it.
NOT_COUNTED = ("include/hcy/hcyclient_server.hpp",)


def lines_of(lcov):
    """For each file its lines of code, and whether they were reached."""
    files = {}
    for entry in lcov.splitlines():
        kind, _, rest = entry.partition(":")
        if kind == "SF":
            lines = files[rest] = {}
        elif kind == "DA":
            number, count = rest.split(",")[:2]
            lines[int(number)] = int(count) > 0
    return files


def branches_of(file):
    """For each condition (line, column) whether it was ever true and ever false, in all
    instantiations of a template together. What the compiler knows (if constexpr) is left out."""
    counts = collections.defaultdict(lambda: [0, 0])
    for line, column, _, _, true, false, *_ in file["branches"]:
        counts[line, column][0] += true
        counts[line, column][1] += false
    return {place: [count > 0 for count in both] for place, both in sorted(counts.items())
            if both != [0, 0]}


def share(reached, total):
    return f"{reached}/{total}"


def main(lcov, exported):
    every_line = []
    every_branch = []
    print(f"{'':44}{'lines':>10}{'branches':>10}")
    files = lines_of(pathlib.Path(lcov).read_text(encoding="utf-8"))
    for file in json.loads(pathlib.Path(exported).read_text(encoding="utf-8"))["data"][0]["files"]:
        name = file["filename"]
        if name.endswith(NOT_COUNTED):
            continue
        lines, branches = files[name], branches_of(file)
        outcomes = [outcome for both in branches.values() for outcome in both]
        print(f"{os.path.relpath(name):44}{share(sum(lines.values()), len(lines)):>10}"
              f"{share(sum(outcomes), len(outcomes)):>10}")
        source = pathlib.Path(name).read_text(encoding="utf-8").splitlines()
        for number, reached in lines.items():
            if not reached:
                print(f"  {number}, never reached: {source[number - 1].strip()}")
        for (number, column), (was_true, was_false) in branches.items():
            if not (was_true and was_false):
                outcome = "false" if was_true else "true"
                print(f"  {number}:{column}, never {outcome}: {source[number - 1].strip()}")
        every_line += lines.values()
        every_branch += outcomes

    reached = 100 * sum(every_branch) / len(every_branch)
    print(f"\nlines {share(sum(every_line), len(every_line))}, "
          f"branches {share(sum(every_branch), len(every_branch))} ({reached:.1f} %)")
    if not all(every_line):
        sys.exit("There are lines that no test reaches.")
    if reached < LEAST_BRANCHES:
        sys.exit(f"Less than {LEAST_BRANCHES} % of the branches are taken by tests.")


if __name__ == "__main__":
    main(*sys.argv[1:])
