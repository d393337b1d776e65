"""A client for engines that speak the Universal Chess Interface protocol on pipes."""

import os
import queue
import re
import shlex
import signal
import subprocess
import tempfile
import threading
import time


class EngineError(Exception):
    """The engine died, or said nothing for too long."""


def command_words(command):
    """The words of a command, given as such or as one text. Names of files are made absolute, so
    that the command works in any folder."""
    words = shlex.split(command) if isinstance(command, str) else list(command)
    return [os.path.abspath(word) if os.path.isfile(word) else word for word in words]


class Engine:
    """A running engine. Every wait has an end: an engine that hangs raises EngineError.

    The engine runs in a folder of its own, so that no book or settings file of the caller's is
    found and log files do not pile up; pass cwd to choose the folder.
    """

    def __init__(self, command, options=(), cwd=None, name=None, timeout=30.0, env=None):
        words = command_words(command)
        self.name = name or os.path.basename(words[0])
        self.timeout = timeout
        self.folder = None if cwd else tempfile.TemporaryDirectory(prefix="engine")
        self.process = subprocess.Popen(
            words,
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL,
            cwd=cwd or self.folder.name,
            env=env,
        )
        self.lines = queue.Queue()
        threading.Thread(target=self._read, daemon=True).start()
        self.send("uci")
        self.options = {}
        for line in self.until("uciok"):
            match = re.match(r"option name (.+?)\s+type\s+(\S+)(.*)", line)
            if match:
                self.options[match.group(1)] = match.group(2) + match.group(3)
        for key, value in dict(options).items():
            self.set_option(key, value)
        self.ready()

    def _read(self):
        for raw in self.process.stdout:
            self.lines.put((time.monotonic(), raw.decode("latin-1").rstrip("\r\n")))
        self.lines.put((time.monotonic(), None))

    def send(self, *lines):
        """Writes the lines in one piece."""
        try:
            self.process.stdin.write("".join(line + "\n" for line in lines).encode("latin-1"))
            self.process.stdin.flush()
        except OSError as error:
            raise EngineError(f"{self.name}: gone, status {self.process.poll()}") from error

    def line(self, timeout=None):
        """The next line as (moment of arrival, text)."""
        limit = self.timeout if timeout is None else timeout
        try:
            moment, text = self.lines.get(timeout=max(0.0, limit))
        except queue.Empty:
            raise EngineError(f"{self.name}: silent for {limit:.1f} s") from None
        if text is None:
            self.lines.put((moment, None))
            raise EngineError(f"{self.name}: ended with status {self.process.wait()}")
        return moment, text

    def until(self, word, timeout=None):
        """All lines up to and with the first that begins with the word."""
        end = time.monotonic() + (self.timeout if timeout is None else timeout)
        collected = []
        while True:
            _, text = self.line(end - time.monotonic())
            collected.append(text)
            if text.split(" ")[0] == word:
                return collected

    def set_option(self, name, value=None):
        self.send(f"setoption name {name}" + ("" if value is None else f" value {value}"))

    def clear(self):
        """Forgets what earlier searches found."""
        self.send("ucinewgame")
        if "Clear Hash" in self.options or self.is_quill():
            self.set_option("Clear Hash")
        self.ready()

    def is_quill(self):
        return "MultiPVMargin" in self.options

    def ready(self, timeout=None):
        self.send("isready")
        self.until("readyok", timeout)

    def go(self, limits, position=None, timeout=None):
        """Searches; the Answer. position and limits are what follows "position" and "go"."""
        if position:
            self.send("position " + position)
        started = time.monotonic()
        self.send("go " + limits)
        return self.answer(started, timeout)

    def answer(self, started, timeout=None):
        end = time.monotonic() + (self.timeout if timeout is None else timeout)
        infos = []
        while True:
            moment, text = self.line(end - time.monotonic())
            if text.startswith("bestmove"):
                return Answer(text, infos, moment - started)
            if text.startswith("info"):
                infos.append((moment - started, text))

    def is_alive(self):
        return self.process.poll() is None

    def end_input(self, timeout):
        """Closes the engine's input and waits for its end; the exit status, None when it hangs."""
        self.process.stdin.close()
        try:
            return self.process.wait(timeout)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
            return None

    def quit(self):
        """Ends the engine; the exit status."""
        try:
            self.send("quit")
            self.process.wait(3)
        except (EngineError, subprocess.TimeoutExpired):
            self.process.kill()
            self.process.wait()
        self.process.stdin.close()
        if self.folder:
            self.folder.cleanup()
        return self.process.returncode

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.quit()


class Answer:
    """A bestmove line with the info lines before it; seconds from "go" to the line."""

    def __init__(self, text, infos, seconds):
        words = text.split()
        self.move = words[1].lower() if len(words) > 1 else ""
        self.ponder = words[3].lower() if len(words) > 3 and words[2] == "ponder" else None
        self.infos = infos
        self.seconds = seconds

    def last(self, field):
        """The number behind the field's name in the last info line that has it, 0 when none has."""
        for _, text in reversed(self.infos):
            words = text.split()
            if field in words[:-1]:
                return int(words[words.index(field) + 1])
        return 0

    def score(self):
        """The last score in centipawns, mates as +-30000; None when none was told."""
        for _, text in reversed(self.infos):
            match = re.search(r"score (cp|mate) (-?\d+)", text)
            if match:
                value = int(match.group(2))
                return value if match.group(1) == "cp" else (30000 if value > 0 else -30000)
        return None

    def depth_times(self):
        """Depth -> seconds at which its first principal variation was complete."""
        times = {}
        for moment, text in self.infos:
            words = text.split()
            if "pv" in words and "depth" in words and "upperbound" not in words:
                times.setdefault(int(words[words.index("depth") + 1]), moment)
        return times


def signal_name(status):
    """The exit status in words."""
    if status is None:
        return "no end"
    if status < 0:
        return signal.Signals(-status).name
    return f"status {status}"
