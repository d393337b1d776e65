"""A client that holds the engine to the letter, as match managers and analysis scripts do.

Standard error is watched through a pipe, and its end is the engine's death. Every line is judged
against the rules of chess and against the "go" that it belongs to, which are answered in order.
"""

import queue
import re
import subprocess
import threading
import time

from chess_rules import START_FEN, Position
from session import QUILL, TIMEOUT

MOVE = r"[a-h][1-8][a-h][1-8][qrbn]?"
INFO = re.compile(
    rf"info depth \d+ (currmovenumber [1-9]\d* currmove (?P<current>{MOVE})|seldepth \d+ "
    r"score (cp -?\d+|mate (-?[1-9]\d*|0))( upperbound| lowerbound)?)"
    r" time \d+ nodes \d+( nps \d+)? hashfull \d+( multipv [1-9]\d*)?"
    rf"(?P<pv> pv( {MOVE})+)?")
BEST = re.compile(rf"bestmove (\(none\)|(?P<best>{MOVE})( ponder (?P<ponder>{MOVE}))?)")


def after(position, moves):
    """The position behind the moves, None when one of them is illegal."""
    position = Position(position.fen())
    for move in moves:
        if move not in position.pseudo_moves() or not position.is_safe(move):
            return None
        position.push(move)
    return position


class Go:
    """A search that was asked for, with what came of it."""

    def __init__(self, position, limits):
        self.position = position
        self.limits = limits
        self.only = set()  # of "searchmoves"
        self.waits = limits == "" or re.search(r"\b(infinite|ponder)\b", limits) is not None
        self.sent = time.monotonic()
        self.released = None if self.waits else 0.0  # the moment from which it may answer
        self.infos = []
        self.lines = set()  # principal variations that are legal
        self.best = self.ponder = None  # texts of moves, best "" when there is none
        self.answered = None  # the moment

    def last(self, field):
        """What stands behind the field's name in the last info line."""
        words = self.infos[-1].split()
        return words[words.index(field) + 1]


class StrictClient:
    """The engine in the folder, started with the arguments. AssertionErrors tell what is wrong."""

    def __init__(self, folder, *args):
        self.process = subprocess.Popen([*QUILL, *args], cwd=folder, stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.lines = queue.Queue()
        self.errors = []
        self.dead = threading.Event()
        self.transcript = []
        self.position = Position(START_FEN)
        self.pending = []  # searches without their answer, in order
        self.answers = 0
        self.notes = []  # texts of "info string" lines
        for run in (self._read_lines, self._read_errors):
            threading.Thread(target=run, daemon=True).start()

    def _read_lines(self):
        for raw in self.process.stdout:
            self.lines.put((time.monotonic(), raw.decode("latin-1").removesuffix("\n")))
        self.lines.put((time.monotonic(), None))

    def _read_errors(self):
        for raw in self.process.stderr:
            self.errors.append(raw.decode("latin-1"))
        self.dead.set()

    def fail(self, text):
        raise AssertionError("\n".join([*self.transcript[-60:], text]))

    def check(self, condition, text):
        if not condition:
            self.fail(text)

    # Talking.

    def send(self, line):
        if line.split()[0] in ("stop", "position", "go", "ucinewgame", "setoption"):
            self.release()
        if line == "ponderhit":
            self.release(lambda go: re.search(r"\bponder\b", go.limits))
        self.transcript.append("> " + line)
        self.process.stdin.write(line.encode() + b"\n")
        self.process.stdin.flush()

    def release(self, which=lambda go: True):
        for go in self.pending:
            if go.released is None and which(go):
                go.released = time.monotonic()

    def set_position(self, fen, moves=()):
        self.position = Position(fen)
        for move in moves:
            self.position.push(move)
        where = "startpos" if fen == START_FEN else "fen " + fen
        self.send(" ".join(["position", where] + (["moves", *moves] if moves else [])))

    def go(self, limits="", only=()):
        go = Go(self.position, limits)
        go.only = set(only)
        self.send(" ".join(["go", limits] + (["searchmoves", *only] if only else [])).rstrip())
        self.pending.append(go)
        return go

    def answer(self, limits="", fen=None, only=(), stop=False):
        """The answer to a "go", behind which a "stop" may follow at once."""
        if fen is not None:
            self.set_position(fen)
        go = self.go(limits, only)
        if stop:
            self.send("stop")
        self.finish()
        return go

    # Listening.

    def take(self, timeout):
        """Judges the next line. Its text, None when there is none in time."""
        try:
            moment, line = self.lines.get(timeout=max(timeout, 0.0))
        except queue.Empty:
            return None
        self.check(line is not None and not self.dead.is_set(), "the engine has died")
        self.transcript.append("< " + line)
        if line.startswith("info string "):
            self.notes.append(line.removeprefix("info string "))
        elif line.startswith("info"):
            self.judge_info(line)
        elif line.startswith("bestmove"):
            self.judge_answer(moment, line)
        return line

    def drain(self, seconds=0.0):
        """Judges what comes in the time, and what has come already."""
        end = time.monotonic() + seconds
        while self.take(end - time.monotonic()) is not None:
            pass

    def until(self, text, timeout=TIMEOUT):
        """Judges lines up to the first that begins with the text; all of them."""
        end = time.monotonic() + timeout
        taken = []
        while not taken or not taken[-1].startswith(text):
            line = self.take(end - time.monotonic())
            self.check(line is not None, f"no {text} within {timeout} s")
            taken.append(line)
        return taken

    def ready(self):
        self.send("isready")
        return self.until("readyok")

    def start(self):
        """The answer to "uci"."""
        self.send("uci")
        return self.until("uciok")

    def finish(self):
        """Waits for all answers; nothing comes behind them."""
        while self.pending:
            self.until("bestmove")
        self.check(self.ready() == ["readyok"], "something came behind bestmove")

    def close(self):
        """Ends the engine, which must not have ended before."""
        self.check(not self.dead.is_set(), "standard error has ended")
        self.send("quit")
        self.process.wait(TIMEOUT)
        self.check(self.process.returncode == 0, f"status {self.process.returncode}")

    def __enter__(self):
        return self

    def __exit__(self, kind, *_):
        try:
            if kind is None:
                self.close()
        finally:
            self.process.kill()
            self.process.wait()
            self.dead.wait(TIMEOUT)
            for stream in (self.process.stdin, self.process.stdout, self.process.stderr):
                stream.close()

    # Judging.

    def judge_info(self, line):
        match = INFO.fullmatch(line)
        self.check(match, "malformed: " + line)
        self.check(self.pending, "without a search: " + line)
        go = self.pending[0]
        go.infos.append(line)
        first = None
        if current := match.group("current"):
            self.check(after(go.position, [current]), "illegal: " + line)
            first = current
        if (pv := match.group("pv")) and pv not in go.lines:
            self.check(after(go.position, pv.split()[1:]), "illegal: " + line)
            go.lines.add(pv)
            first = pv.split()[1]
        self.check(not go.only or first is None or first in go.only, "not to be searched: " + line)

    def judge_answer(self, moment, line):
        match = BEST.fullmatch(line)
        self.check(match, "malformed: " + line)
        self.check(self.pending, "unasked: " + line)
        go = self.pending.pop(0)
        self.answers += 1
        go.answered = moment
        go.best, go.ponder = match.group("best") or "", match.group("ponder")
        self.check(go.released is not None and moment >= go.released, "too early: " + line)
        self.check(go.infos, "no info before " + line)
        for field in ("depth", "score", "nodes", "nps", "time"):
            self.check(f" {field} " in go.infos[-1], f"{field} missing before {line}")
        if go.best:
            moves = [go.best] + ([go.ponder] if go.ponder else [])
            self.check(after(go.position, moves), "illegal: " + line)
            self.check(not go.only or go.best in go.only, "not to be searched: " + line)
            self.check(go.infos[-1].split(" pv ")[1:] and go.last("pv") == go.best,
                       f"the last line is another one: {go.infos[-1]}\n{line}")
        else:
            self.check(not go.position.legal_moves(), "there is a move: " + line)
            score = "score mate 0 " if go.position.is_in_check() else "score cp 0 "
            self.check(score in go.infos[-1] and " pv" not in go.infos[-1], go.infos[-1])
