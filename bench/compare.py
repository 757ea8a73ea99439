# SPDX-License-Identifier: Apache-2.0
"""Measures all clients side by side; started by script/bench."""

import argparse
import contextlib
import json
import os
import statistics

import growth
import micro
import network
from clients import PROGRAMS, Bench

# Calls in one turn of a client: some tens of milliseconds of the faster ones.
CALLS = {"W1": 1000, "W2": 40, "W3": 3, "W4": 3, "W5": 3, "W6": 20, "W7": 3, "W8": 3, "W9": 20}
TITLES = {
    "W1": "one 1-by-1 double",
    "W2": "1 MiB of doubles",
    "W3": "32 MiB of doubles",
    "W4": "4 Mi int16, half negative",
    "W5": "cell of 100,000 1-by-1 doubles",
    "W6": "1 Mi char units, a tenth of them not ASCII",
    "W7": "4 Mi uint64, varints of every length",
    "W8": "4 Mi int64, half negative",
    "W9": "1 Mi char units, all ASCII",
}


def quartiles(values):
    if len(values) == 1:
        return [values[0]] * 3
    return statistics.quantiles(values, n=4, method="inclusive")


def named_quartiles(values):
    return dict(zip(("lower_quartile", "median", "upper_quartile"), quartiles(values)))


def in_turns(clients, calls, rounds):
    """Seconds a call, for each client a list with an entry a round. Another client begins each
    round, so that none always follows the same one."""
    names = list(clients)
    times = {name: [] for name in names}
    for name in names:
        clients[name].run(1)
    for number in range(rounds):
        first = number % len(names)
        for name in names[first:] + names[:first]:
            times[name].append(clients[name].run(calls)[0])
    return times


def processors(workload):
    """Where the programs run. In W1 they only wait for each other: on two processors, how long
    one takes to wake the other would be all that is seen."""
    available = os.sched_getaffinity(0)
    return {min(available)} if workload == "W1" else available


def measure(bench, workload, calls, rounds):
    with contextlib.ExitStack() as stack:
        clients = {name: stack.enter_context(bench.client(name, workload))
                   for name in bench.names}
        for client in clients.values():
            client.check()
        bench.run_on(processors(workload), clients.values())
        times = in_turns(clients, calls, rounds)
        for client in clients.values():
            client.check()
        memory = {name: client.memory() for name, client in clients.items()}
    return {name: result(name, times, memory[name]) for name in clients}


def result(name, times, memory):
    found = {
        "seconds": named_quartiles(times[name]),
        "resident_before_mib": memory[0],
        "resident_peak_mib": memory[1],
    }
    # Of the same round: what disturbs the machine for longer than a round cancels out.
    for base in ("floor", "by_hand"):
        if base in times:
            ratios = [time / other for time, other in zip(times[name], times[base])]
            found["to_" + base] = named_quartiles(ratios)
    # Both make and fill an array for every call.
    if name == "python" and "library_filling" in times:
        pairs = list(zip(times[name], times["library_filling"]))
        found["beyond_library_filling"] = named_quartiles([time - c for time, c in pairs])
        found["to_library_filling"] = named_quartiles([time / c for time, c in pairs])
    return found


def print_beside_c(found):
    beyond = {key: f"{value * 1e6:.1f}" for key, value in found["beyond_library_filling"].items()}
    print(f"\npython takes {beyond['median']} µs a call ({beyond['lower_quartile']} to "
          f"{beyond['upper_quartile']}) beyond library_filling: "
          f"{ratio(found, 'library_filling', 3)} times as long")


def duration(seconds):
    for unit, scale in (("s", 1), ("ms", 1e3), ("µs", 1e6)):
        if seconds * scale >= 1:
            return f"{seconds * scale:.3g} {unit}"
    return f"{seconds * 1e9:.3g} ns"


def ratio(found, base, digits=2):
    if "to_" + base not in found:
        return "-"
    values = found["to_" + base]
    return (f"{values['median']:.{digits}f} ({values['lower_quartile']:.{digits}f} to "
            f"{values['upper_quartile']:.{digits}f})")


def print_table(workload, results):
    print(f"\n{workload}, {TITLES[workload]}\n")
    print("| client | median | quartiles | to floor | to by_hand | resident before, peak (MiB) |")
    print("| --- | --- | --- | --- | --- | --- |")
    for name, found in results.items():
        seconds = found["seconds"]
        print(f"| {name} | {duration(seconds['median'])} "
              f"| {duration(seconds['lower_quartile'])} to {duration(seconds['upper_quartile'])} "
              f"| {ratio(found, 'floor')} | {ratio(found, 'by_hand')} "
              f"| {found['resident_before_mib']:.0f}, {found['resident_peak_mib']:.0f} |",
              flush=True)
    if "to_library_filling" in results.get("python", {}):
        print_beside_c(results["python"])


def print_summary(all_results):
    names = list(next(iter(all_results.values())))
    print("\nMedians of the ratio to the floor, and in brackets to by_hand\n")
    print("| workload | " + " | ".join(names) + " |")
    print("| --- |" + " --- |" * len(names))
    for workload, results in all_results.items():
        cells = []
        for found in results.values():
            medians = [f"{found[key]['median']:.2f}" for key in ("to_floor", "to_by_hand")
                       if key in found]
            cells.append("".join(medians[:1] + [f" ({other})" for other in medians[1:]]) or "-")
        print(f"| {workload} | " + " | ".join(cells) + " |")
    if "W3" in all_results:
        print("| peak resident memory in W3, MiB | " + " | ".join(
            f"{found['resident_peak_mib']:.0f}" for found in all_results["W3"].values()) + " |")


def compare(bench, workloads, options):
    results = {}
    for workload in workloads:
        results[workload] = measure(bench, workload, options.calls or CALLS[workload],
                                    options.rounds)
        print_table(workload, results[workload])
    print_summary(results)
    return results


def arguments():
    parser = argparse.ArgumentParser(prog="script/bench")
    parser.add_argument("--workloads", default=",".join(CALLS), metavar="W1,W2...",
                        help="which workloads (all)")
    parser.add_argument("--clients", default=",".join(PROGRAMS), metavar="A,B...",
                        help="which clients (%(default)s); floor and by_hand give the ratios")
    parser.add_argument("--rounds", type=int, default=21, help="turns of each client (21)")
    parser.add_argument("--calls", type=int, help="calls in a turn (as many as suit the workload)")
    parser.add_argument("--json", metavar="FILE", help="write the results there too")
    parser.add_argument("--growth", action="store_true",
                        help="measure instead how cost grows with size")
    parser.add_argument("--micro", action="store_true",
                        help="measure instead what needs no network")
    return parser.parse_args()


def chosen(text, known):
    names = text.split(",")
    for name in names:
        if name not in known:
            raise SystemExit(f"script/bench: there is no {name}; known are {', '.join(known)}")
    return [name for name in known if name in names]


def main():
    options = arguments()
    workloads = chosen(options.workloads, CALLS)
    names = chosen(options.clients, PROGRAMS)
    with Bench(os.environ["HCY_BENCH_PROGRAMS"], names) as bench:
        where = network.describe(bench)
        print(f"Loopback {where['loopback']}, {where['congestion_control']}, "
              f"tcp_slow_start_after_idle={where['tcp_slow_start_after_idle']}; "
              f"{os.cpu_count()} processors, load average {os.getloadavg()[0]:.1f}")
        for name in names:
            if name not in bench.names:
                print(f"{name} is not built here, and left out.")
        if options.growth:
            results = growth.measure(bench)
        elif options.micro:
            results = micro.measure(bench.directory)
        else:
            results = compare(bench, workloads, options)
        if options.json:
            with open(options.json, "w", encoding="utf-8") as file:
                json.dump({"network": where, "rounds": options.rounds, "results": results}, file,
                          indent=2)
                file.write("\n")


if __name__ == "__main__":
    main()
