# SPDX-License-Identifier: Apache-2.0
"""Starts the servers and clients, and lets the clients take turns."""

import os
import pathlib
import socket
import subprocess

PYTHON = "/usr/bin/python3"  # which has Debian's NumPy
PYTHON_CLIENT = pathlib.Path(__file__).with_name("python_client.py")

# What each client is called in the tables, its program, and the server that it calls.
PROGRAMS = {
    "sockets": ("bench-sockets", "bench-echo-server"),
    "floor": ("bench-floor", "bench-echo-server"),
    "grpc": ("bench-grpc", "bench-grpc-echo-server"),
    "by_hand": ("bench-by-hand", "bench-echo-server"),
    "by_hand_filling": ("bench-by-hand-filling", "bench-echo-server"),
    "library": ("bench-library", "bench-echo-server"),
    "cpp": ("bench-library-cpp", "bench-echo-server"),
    "library_filling": ("bench-library-filling", "bench-echo-server"),
    "python": (PYTHON_CLIENT, "bench-echo-server"),
}


class Program:
    """A program that ends when its standard input does."""

    def __init__(self, command):
        # libcurl honours the variables of proxies.
        environment = {name: value for name, value in os.environ.items()
                       if not name.lower().endswith("_proxy")}
        self.process = subprocess.Popen(command, stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, text=True, env=environment)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.stdin.close()
        try:
            self.process.wait(timeout=60)
        except subprocess.TimeoutExpired:
            self.process.kill()
            raise

    def read(self):
        line = self.process.stdout.readline()
        if not line:
            raise RuntimeError(f"{self.process.args} has ended")
        return line.split()

    def ask(self, command):
        self.process.stdin.write(command + "\n")
        self.process.stdin.flush()
        return self.read()


    def run_on(self, processors):
        for thread in os.listdir(f"/proc/{self.process.pid}/task"):
            os.sched_setaffinity(int(thread), processors)


class Server(Program):
    def __init__(self, path):
        super().__init__([path])
        self.port = int(self.read()[0])

    def congestion_control(self):
        """What a connection to it really uses."""
        with socket.create_connection(("127.0.0.1", self.port)) as connection:
            name = connection.getsockopt(socket.IPPROTO_TCP, socket.TCP_CONGESTION, 16)
        return name.rstrip(b"\0").decode()


class Client(Program):
    def __init__(self, command, port, workload, threads=1):
        super().__init__([*command, str(port), workload, str(threads)])

    def check(self):
        if self.ask("check") != ["ok"]:
            raise RuntimeError("no answer to a check")

    def run(self, calls):
        """The median of the calls and the time of all of them together, in seconds."""
        median, together = self.ask(f"run {calls}")
        return int(median) / 1e9, int(together) / 1e9

    def memory(self):
        """Resident before the first call and at most since, in MiB."""
        before, peak = self.ask("memory")
        return int(before) / 1024, int(peak) / 1024


class Bench:
    """The programs of a build directory, and one running server of each kind."""

    def __init__(self, directory, names=None):
        self.directory = pathlib.Path(directory)
        self.servers = {}
        self.names = [name for name, programs in PROGRAMS.items()
                      if (names is None or name in names)
                      and all((self.directory / program).exists() for program in programs)]

    def __enter__(self):
        for server in {PROGRAMS[name][1] for name in self.names}:
            self.servers[server] = Server(self.directory / server)
        return self

    def __exit__(self, *_):
        for server in self.servers.values():
            server.__exit__()

    def run_on(self, processors, clients):
        for program in [*self.servers.values(), *clients]:
            program.run_on(processors)

    def client(self, name, workload, threads=1):
        program, server = PROGRAMS[name]
        command = [self.directory / program]
        if program == PYTHON_CLIENT:
            command.insert(0, PYTHON)
        return Client(command, self.servers[server].port, workload, threads)
