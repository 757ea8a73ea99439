# SPDX-License-Identifier: Apache-2.0
"""Counts instructions, which a busy machine does not disturb, and compares them with the counts
that the repository keeps; started by script/instructions."""

import argparse
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

from clients import Client, Server

KEPT = pathlib.Path(__file__).with_name("instructions.json")
TOLERANCE = 0.05

CALL = "call/W1"
CALLS = 200

# Operations of bench-repeat, and how often each is done: often enough that the first time, which
# may cost more, does not count.
OPERATIONS = {
    "create/scalar/1": 1000,
    "create/double/1000": 1000,
    "create/int16/1000": 1000,
    "create/char/1000": 1000,
    "create/struct/1": 1000,
    "create/cell/1000": 100,
    "duplicate/double/1": 1000,
    "duplicate/double/1000": 1000,
    "duplicate/int16/1000": 1000,
    "duplicate/struct/1": 1000,
    "duplicate/cell/1000": 20,
    "get_pr/double/1": 10000,
    "get_data/double/1": 10000,
    "get_data/int16/1": 10000,
    "get_logicals/logical/1": 10000,
    "get_chars/char/1": 10000,
    "get_cell/double/1000": 1000,
    "set_cell/double/1000": 1000,
    "get_field/double/10": 1000,
    "set_field/double/10": 1000,
    "get_field/double/1000": 100,
    "create_string/ascii/1000": 1000,
    "to_string/ascii/1000": 100,
    "to_string/accents/1000": 100,
    "to_string/chinese/1000": 100,
    "to_string/pairs/1000": 100,
    "fields/add/100": 20,
    "fields/add, remove first/100": 20,
}

# The C library picks its copying loops by the processor; these are the same everywhere.
PLAIN_PROCESSOR = ":".join([
    "glibc.cpu.hwcaps=-AVX512F,-AVX512VL,-AVX512BW,-AVX2,-AVX,-AVX_Fast_Unaligned_Load,-BMI2,"
    "-ERMS,-FSRM",
    "glibc.cpu.x86_data_cache_size=32768",
    "glibc.cpu.x86_shared_cache_size=1048576",
    "glibc.cpu.x86_non_temporal_threshold=786432",
])


def callgrind(file):
    return ["valgrind", "--quiet", "--tool=callgrind", f"--callgrind-out-file={file}"]


def total(file):
    return int(re.search(r"^(?:summary|totals): (\d+)", file.read_text(), re.MULTILINE).group(1))


def of_calls(programs, server, calls):
    """The instructions of the client from its start to its end."""
    with tempfile.TemporaryDirectory() as directory:
        file = pathlib.Path(directory, "counts")
        with Client([*callgrind(file), programs / "bench-library"], server.port, "W1") as client:
            client.check()
            client.run(calls)
        return total(file)


def of_call(programs):
    """The least of some: libcurl does more where it looks for a reply that is not there yet."""
    with Server(programs / "bench-echo-server") as server:
        once = min(of_calls(programs, server, CALLS) for _ in range(3))
        twice = min(of_calls(programs, server, 2 * CALLS) for _ in range(3))
    return round((twice - once) / CALLS)


def of_operations(programs):
    with tempfile.TemporaryDirectory() as directory:
        file = pathlib.Path(directory, "counts")
        arguments = [text for name, repeats in OPERATIONS.items() for text in (name, str(repeats))]
        subprocess.run([*callgrind(file), programs / "bench-repeat", *arguments], check=True)
        # One dump after another, numbered from 1.
        return {name: round(total(file.with_suffix(f".{number}")) / repeats)
                for number, (name, repeats) in enumerate(OPERATIONS.items(), start=1)}


def count_all(programs):
    return {CALL: of_call(programs), **of_operations(programs)}


def compare(found, kept):
    """Prints both, and returns whether they agree."""
    agree = True
    print(f"{'':32}{'kept':>12}{'found':>12}")
    for name in sorted(found.keys() | kept.keys()):
        before, now = kept.get(name), found.get(name)
        verdict = ""
        if before is None or now is None:
            verdict = "not kept" if before is None else "not counted"
        elif abs(now - before) > TOLERANCE * before:
            verdict = f"{(now / before - 1) * 100:+.1f} %"
        agree = agree and not verdict
        print(f"{name:32}{before or '-':>12}{now or '-':>12}  {verdict}".rstrip())
    return agree


def main():
    parser = argparse.ArgumentParser(prog="script/instructions")
    parser.add_argument("--update", action="store_true", help="keep what is counted now")
    options = parser.parse_args()
    os.environ["GLIBC_TUNABLES"] = PLAIN_PROCESSOR
    found = count_all(pathlib.Path(os.environ["HCY_BENCH_PROGRAMS"]))
    kept = json.loads(KEPT.read_text()) if KEPT.exists() else {}
    agree = compare(found, kept)
    if options.update:
        KEPT.write_text(json.dumps(found, indent=2) + "\n")
    elif not agree:
        sys.exit("Instruction counts differ by more than "
                 f"{TOLERANCE:.0%} from {KEPT.name}: find out why, or keep the new ones by "
                 "script/instructions --update.")


if __name__ == "__main__":
    main()
