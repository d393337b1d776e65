"""Runs the real program: whole sessions at once, or line by line as a GUI does."""

import os
import queue
import re
import subprocess
import tempfile
import threading
import unittest

QUILL = os.environ["QUILL"]
TIMEOUT = 120  # seconds; generous, for builds with sanitizers on busy machines
START_FEN = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR"


class Result:
    """What a finished session left behind."""

    def __init__(self, out, err, status, log):
        self.out = out
        self.err = err
        self.status = status
        self.log = log  # of the error log file, "" without one

    def answers(self):
        return re.findall(r"^bestmove .*$", self.out, re.MULTILINE)


class SessionTest(unittest.TestCase):
    """Each test has a folder of its own as the program's current directory."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def write(self, name, data):
        path = os.path.join(self.folder, name)
        with open(path, "wb") as file:
            file.write(data if isinstance(data, bytes) else data.encode())
        return path

    def run_session(self, text, *args):
        """Feeds all lines in one write and waits for the end."""
        data = text if isinstance(text, bytes) else text.encode()
        done = subprocess.run([QUILL, *args], input=data, capture_output=True, cwd=self.folder,
                              timeout=TIMEOUT, check=False)
        return Result(done.stdout.decode("latin-1"), done.stderr.decode("latin-1"),
                      done.returncode, self.read_log())

    def read_log(self):
        path = os.path.join(self.folder, "quill-1.0-error.log")
        if not os.path.exists(path):
            return ""
        with open(path, encoding="latin-1") as file:
            return file.read()

    def start(self, *args):
        engine = Engine(self.folder, args)
        self.addCleanup(engine.end)
        return engine


class Engine:
    """A running program, spoken to line by line."""

    def __init__(self, folder, args):
        self.process = subprocess.Popen([QUILL, *args], cwd=folder, stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                                        encoding="latin-1")
        self.lines = queue.Queue()
        threading.Thread(target=self._read, daemon=True).start()

    def _read(self):
        for line in self.process.stdout:
            self.lines.put(line.rstrip("\n"))
        self.lines.put(None)

    def send(self, *lines):
        self.process.stdin.write("".join(line + "\n" for line in lines))
        self.process.stdin.flush()

    def expect(self, pattern, timeout=TIMEOUT):
        """Skips lines until one matches, and returns it."""
        while True:
            line = self.lines.get(timeout=timeout)
            if line is None:
                raise AssertionError(f"the program ended before {pattern!r}")
            if re.search(pattern, line):
                return line

    def start_uci(self):
        self.send("uci")
        self.expect("^uciok$")

    def wait(self):
        return self.process.wait(TIMEOUT)

    def end(self):
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()
        for pipe in (self.process.stdin, self.process.stdout, self.process.stderr):
            try:
                pipe.close()
            except BrokenPipeError:
                pass


if __name__ == "__main__":
    unittest.main()
