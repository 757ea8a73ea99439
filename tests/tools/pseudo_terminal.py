# SPDX-License-Identifier: Apache-2.0
"""A program on a terminal of its own."""
import fcntl
import os
import pty
import re
import select
import struct
import subprocess
import termios
import time


class PseudoTerminal:
    """Runs the program as the leader of a session whose terminal this is, with 24 lines. Further
    arguments are those of subprocess.Popen."""

    def __init__(self, arguments, columns=80, stdout=None, stderr=None, **more):
        self.output = ''
        self.terminal, child = pty.openpty()
        fcntl.ioctl(child, termios.TIOCSWINSZ, struct.pack('HHHH', 24, columns, 0, 0))
        more.setdefault('env', dict(os.environ, no_proxy='*', LC_ALL='C.UTF-8'))
        self.process = subprocess.Popen(
            arguments, stdin=child, stdout=stdout or child, stderr=stderr or child,
            start_new_session=True, **more,
            preexec_fn=lambda: fcntl.ioctl(0, termios.TIOCSCTTY, 0))
        os.close(child)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()
        for stream in (self.process.stdout, self.process.stderr):
            if stream:
                stream.close()
        os.close(self.terminal)

    def echoes(self):
        return bool(termios.tcgetattr(self.terminal)[3] & termios.ECHO)

    def type(self, text):
        os.write(self.terminal, text.encode())

    def read_until(self, wanted, seconds=60):
        """Reads what is shown until this pattern is in it, or to the end when that is None."""
        end = time.monotonic() + seconds
        while wanted is None or not re.search(wanted, self.output):
            if not select.select([self.terminal], [], [], max(0, end - time.monotonic()))[0]:
                raise AssertionError(f'{wanted!r} was not shown, but {self.output!r}')
            try:
                piece = os.read(self.terminal, 65536)
            except OSError:  # nobody has it open any more
                piece = b''
            if not piece:
                if wanted is None:
                    break
                raise AssertionError(f'{wanted!r} was not shown, but {self.output!r}')
            self.output += piece.decode(errors='replace')
        return self.output.replace('\r\n', '\n')

    def finish(self):
        """Everything that was shown, and the exit status."""
        return self.read_until(None), self.process.wait(60)
