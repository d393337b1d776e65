"""Runs whole sessions of the real program, each in a folder of its own."""

import os
import re
import resource
import subprocess
import tempfile
import typing
import unittest

from uci_client import command_words

# The program as the words of a command, which may begin with what runs it (wine, an emulator).
QUILL = command_words(os.environ["QUILL"])
# Sanitizers need address space, files and streams of their own.
IS_SANITIZED = bool(os.environ.get("SANITIZED"))
ON_WINDOWS = QUILL[-1].endswith(".exe")
TIMEOUT = 120  # seconds; generous, for builds with sanitizers on busy machines
START_FEN = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR"


class Result(typing.NamedTuple):
    """What a finished session left behind."""

    out: str
    err: str
    log: str  # of the error log file, "" without one

    def answers(self):
        return re.findall(r"^bestmove .*$", self.out, re.MULTILINE)


class SessionTest(unittest.TestCase):
    """Each test has a folder of its own as the program's current directory."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def write(self, name, data):
        with open(os.path.join(self.folder, name), "wb") as file:
            file.write(data if isinstance(data, bytes) else data.encode())

    def run_session(self, text, *args, memory=resource.RLIM_INFINITY):
        """Feeds all lines in one write and waits for the end, which must be a regular one. The
        program gets no more address space than memory says, in bytes."""
        data = text if isinstance(text, bytes) else text.encode()
        done = subprocess.run(
            [*QUILL, *args], input=data, capture_output=True, cwd=self.folder, timeout=TIMEOUT,
            check=False,
            preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (memory, memory)))
        self.assertEqual(done.returncode, 0, data[:200])
        return Result(done.stdout.decode("latin-1"), done.stderr.decode("latin-1"), self.read_log())

    def read_log(self):
        path = os.path.join(self.folder, "quill-1.0-error.log")
        if not os.path.exists(path):
            return ""
        with open(path, encoding="latin-1") as file:
            return file.read()
