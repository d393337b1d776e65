#!/usr/bin/env python3
"""Feeds an engine random and mutated lines, and checks that nothing but a short answer comes of it.

  tools/fuzz_stdin.py [--seconds S] [--seed N] [--keep FOLDER] ENGINE

ENGINE is quill, best a build with AddressSanitizer. One session after the other is played, each
with a process of its own: console or UCI commands, positions, typed moves, options, searches,
broken forms of all these, bytes of any value, lines of any length. After each batch the engine must
answer; at the end of its input it must end with status 0 and no sanitizer report. A session that
fails is kept as a file that can be fed to the engine again. Values that would only make a session
long or big (a table of gigabytes, a search of hours) are kept out.
"""

import argparse
import pathlib
import random
import re
import subprocess
import sys
import tempfile
import threading
import time

import sanitizers
from bratko_kopec import read_epd
from chess_rules import Position, START_FEN
from positions import MIDDLEGAMES, OPENINGS

FENS = MIDDLEGAMES + [START_FEN] + [fen for _, fen, _ in read_epd()]
ODD_FENS = [
    "8/8/8/8/8/8/8/8 w - - 0 1",
    "kK6/8/8/8/8/8/8/8 w - - 0 1",
    "K6k/P7/8/8/8/8/p7/8 b KQkq e3 99 300",
    "QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/K6k w - - 0 1",
    "PPPPPPPP/8/8/3k4/8/3K4/8/pppppppp w KQkq a3 0 1",
    "rnbqkbnr/pppppppp/////PPPPPPPP/RNBQKBNR w KQkq - -",
    "R6R/3Q4/1Q4Q1/4Q3/2Q4Q/Q4Q2/pp1Q4/kBNN1KB1 w - - 0 1",
    "4k3/8/8/8/8/8/8/4K2R b Kk h3",
    "rnbqkbnrr/ppppppppp/9/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
    "8/8/8/3k4/3Pp3/8/8/3K4 b - d3 0 1",
    "8/8/8/3k4/3Pp3/8/8/3K4 b - d4 0 1",
]
OPTIONS = [
    "UCI_EngineAbout", "UCI_Opponent", "UCI_AnalyseMode", "Threads", "Hash", "Ponder", "MultiPV",
    "MultiPVMargin", "OwnBook", "SendPv", "Clear", "Clear Hash", "eval.mobility.opening",
    "eval.mobility.endgame", "eval.passedpawns.opening", "eval.passedpawns.endgame",
    "eval.pawnstructure.opening", "eval.pawnstructure.endgame", "eval.kingattack", "nonsense", "",
]
VALUES = ["", "0", "1", "2", "16", "17", "100", "256", "1000", "-1", "true", "TRUE", "value"]
HUGE = ["2147483647", "2147483648", "-2147483649", "4294967296", "9" * 30, "-" + "9" * 30]
WORDS = [
    "uci", "isready", "ucinewgame", "stop", "ponderhit", "position", "go", "setoption", "book",
    "fen", "%", "g", "g tt", "mt", "mt 0", "mt 1", "perft", "perft 2", "perft 0", "perft -1",
    "divide", "divide 2", "", " ", "\t", "\r", "O-O", "O-O-O", "e8=Q", "a7a8q", "Nf3+", "0000",
    "e2e4 e7e5", "  e2e4  ",
]
GO_FIELDS = ["wtime", "btime", "winc", "binc", "depth", "nodes", "movetime", "movestogo"]


class Lines:
    """Makes the lines of one session."""

    def __init__(self, rng, has_huge_limits):
        self.rng = rng
        # Huge limits are for sessions without "g", which would block for as long as they say.
        self.has_huge_limits = has_huge_limits

    def fen(self):
        return self.rng.choice(self.rng.choice((FENS, FENS, ODD_FENS)))

    def moves(self):
        """Legal moves from the start position, mostly."""
        kind = self.rng.random()
        if kind < 0.5:
            return self.rng.choice(OPENINGS)
        if kind < 0.6:  # a game longer than any stack
            return " ".join("g1f3 g8f6 f3g1 f6g8".split() * self.rng.randint(1, 700))
        position, played = Position(), []
        for _ in range(self.rng.randint(0, 25)):
            legal = position.legal_moves()
            if not legal:
                break
            played.append(self.rng.choice(legal))
            position.push(played[-1])
        return " ".join(played)

    def position(self):
        root = "startpos" if self.rng.random() < 0.5 else "fen " + self.fen()
        moves = " moves " + self.moves() if self.rng.random() < 0.7 else ""
        return f"position {root}{moves}"

    def go(self):
        parts = ["go"]
        for _ in range(self.rng.randint(0, 4)):
            field = self.rng.choice(GO_FIELDS + ["infinite", "ponder"])
            parts.append(field)
            if field in GO_FIELDS and self.rng.random() < 0.9:
                huge = self.has_huge_limits and self.rng.random() < 0.2
                parts.append(self.rng.choice(HUGE) if huge else str(self.rng.randint(-5, 300)))
        return " ".join(parts)

    def setoption(self):
        value = self.rng.choice(VALUES + HUGE)
        return f"setoption name {self.rng.choice(OPTIONS)} value {value}"

    def noise(self):
        length = self.rng.choice((1, 3, 10, 80, 500, 16382, 16383, 16384, 40000))
        kind = self.rng.random()
        if kind < 0.3:
            letters = b"abcdefgh12345678x-=+oONBRQK/ wkq"
            return bytes(self.rng.choices(letters, k=min(length, 500)))
        if kind < 0.6:
            return self.rng.randbytes(length)
        pieces = (b"x", b"e2e4 ", b"k/K", b"8/", b"position ", b"fen ", b" ", b"\0")
        return self.rng.choice(pieces) * length

    def clean(self):
        kind = self.rng.random()
        if kind < 0.25:
            return self.position()
        if kind < 0.45:
            return self.go()
        if kind < 0.55:
            return self.setoption()
        if kind < 0.65:
            return self.fen()
        if kind < 0.70:
            return "fen " + self.fen()
        if kind < 0.80:
            return self.rng.choice(self.rng.choice(OPENINGS).split())
        return self.rng.choice(WORDS)

    def mutated(self, line):
        line = bytearray(line)
        for _ in range(self.rng.choice((1, 1, 1, 2, 5, 20))):
            at = self.rng.randrange(len(line) + 1)
            kind = self.rng.randrange(5)
            if kind == 0 and at < len(line):
                line[at] = self.rng.randrange(256)
            elif kind == 1:
                line[at:at] = self.rng.randbytes(self.rng.randint(1, 3))
            elif kind == 2:
                del line[at : at + self.rng.randint(1, 5)]
            elif kind == 3:
                line[at:at] = line[at : at + self.rng.randint(1, 40)]
            else:
                words = bytes(line).split(b" ")
                self.rng.shuffle(words)
                line = bytearray(b" ".join(words))
        return bytes(line)

    def next(self):
        """One line without its end, harmless in length and size."""
        while True:
            line = self.noise() if self.rng.random() < 0.05 else self.clean().encode()
            if self.rng.random() < 0.35:
                line = self.mutated(line)
            line = line.replace(b"\n", b"")
            if self.is_bearable(line):
                return line

    def is_bearable(self, line):
        """Whether the line can neither end the engine nor make it big or slow on purpose."""
        lower = line.lower()
        numbers = [int(digits) for digits in re.findall(rb"\d+", lower)]
        largest = max(numbers, default=0)
        if b"quit" in lower or b"readyok" in lower or b"mark" in lower:
            return False
        if (b"perft" in lower or b"divide" in lower) and largest > 2:
            return False
        if b"hash" in lower and 256 < largest:
            return False
        if self.has_huge_limits:
            words = re.split(rb"[ \t\r\0]", line.strip())
            return b"g" not in words
        if b"mt" in lower and largest > 1:
            return False
        return not (re.search(rb"\bgo\b", lower) and largest > 300)


class Session:
    """One engine process, fed until its end."""

    def __init__(self, command, folder):
        self.sent = []
        self.tail = b""
        self.changed = threading.Condition()
        self.process = subprocess.Popen(
            [command],
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            cwd=folder,
            env=sanitizers.environment(folder),
        )
        self.reader = threading.Thread(target=self._read, daemon=True)
        self.reader.start()

    def _read(self):
        while chunk := self.process.stdout.read1(65536):
            with self.changed:
                # Room for the longest answer between two marks that matters.
                self.tail = (self.tail + chunk)[-1000000:]
                self.changed.notify_all()
        self.process.wait()
        with self.changed:
            self.changed.notify_all()

    def send(self, line):
        self.sent.append(line)
        self.process.stdin.write(line + b"\n")

    def is_answering(self, serial, timeout):
        """Whether the engine gets through all it was sent, and says readyok."""
        mark = b"unknown command: 'mark%d'" % serial
        self.send(b"isready")
        self.send(b"mark%d" % serial)
        self.process.stdin.flush()
        with self.changed:
            there = self.changed.wait_for(
                lambda: mark in self.tail or self.process.poll() is not None, timeout
            )
            answered = there and mark in self.tail and b"readyok" in self.tail
            self.tail = b""
        return answered

    def end(self, timeout):
        """Closes the input; what was wrong, or None."""
        try:
            self.process.stdin.close()
        except OSError:
            pass
        try:
            status = self.process.wait(timeout)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
            return f"still there {timeout:g} s after the end of input"
        self.reader.join(5)
        return f"exit status {status}" if status != 0 else None


def play(session, rng, patience):
    """Plays one session; (what was wrong or None, number of lines)."""
    lines = Lines(rng, has_huge_limits=rng.random() < 0.4)
    try:
        if rng.random() < 0.6:
            session.send(b"uci")
        for serial in range(rng.randint(1, 20)):
            for _ in range(rng.randint(1, 30)):
                session.send(lines.next())
                if rng.random() < 0.02:
                    session.process.stdin.flush()
                    time.sleep(rng.uniform(0, 0.02))
            if not session.is_answering(serial, patience):
                session.end(1)
                return f"no answer in {patience:g} s, status {session.process.poll()}"
        # The end of input comes with a search under way, or just after one.
        session.send(rng.choice((b"stop", b"go movetime 30", b"go infinite", b"position startpos")))
    except OSError:
        pass
    return session.end(patience)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("engine")
    parser.add_argument("--seconds", type=float, default=60)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--patience", type=float, default=60, help="longest silence, seconds")
    parser.add_argument("--keep", default=".", help="folder for the input of a failed session")
    args = parser.parse_args()

    command = str(pathlib.Path(args.engine).resolve())
    end = time.monotonic() + args.seconds
    sessions = total = failures = 0
    while time.monotonic() < end and failures < 5:
        seed = args.seed * 1000003 + sessions
        with tempfile.TemporaryDirectory(prefix="fuzz") as folder:
            session = Session(command, folder)
            problem = play(session, random.Random(seed), args.patience)
            found = sanitizers.reports(folder)
        sessions += 1
        total += len(session.sent)
        if problem or found:
            failures += 1
            kept = pathlib.Path(args.keep, f"fuzz-{seed}.in")
            kept.write_bytes(b"\n".join(session.sent) + b"\n")
            reason = problem or "sanitizer report"
            print(f"FAILED: session {sessions}: {reason}; input kept in {kept}")
            print("\n".join(found) or session.tail[-2000:].decode("latin-1"), flush=True)
    print(f"{sessions} sessions, {total} lines, {failures} failures (seed {args.seed})")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
