# SPDX-License-Identifier: Apache-2.0
"""A local server that ends with this process."""
import os
import subprocess


class LocalServer:
    def __init__(self, *arguments):
        self.process = subprocess.Popen(
            [os.environ['HCY_LOCAL_SERVER'], '--port', '0', '--stop-on-eof', *arguments],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.url = self.process.stdout.readline().split()[-1]

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.stdin.close()
        self.process.stdout.close()
        assert self.process.wait(30) == 0
