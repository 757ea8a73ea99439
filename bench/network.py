# SPDX-License-Identifier: Apache-2.0
"""Says on what network the programs were measured."""

import os
import pathlib


def describe(bench):
    controls = sorted({server.congestion_control() for server in bench.servers.values()})
    idle = pathlib.Path("/proc/sys/net/ipv4/tcp_slow_start_after_idle").read_text().strip()
    private = os.environ.get("HCY_BENCH_PRIVATE_NETWORK") == "yes"
    return {
        "loopback": "in a network namespace of its own" if private else "of the machine",
        "congestion_control": ", ".join(controls),
        "tcp_slow_start_after_idle": int(idle),
    }
