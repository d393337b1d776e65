#!/usr/bin/env python3
"""Starts and stops searches in every order; each "go" must get its one "bestmove" in time.

  tools/stress_search.py [--threads N] [--cpus LIST] [--scale F] [--only NAME] [--seed S] ENGINE

ENGINE is quill, best a build with ThreadSanitizer or AddressSanitizer. --cpus pins it to
processors. --scale multiplies the number of rounds of every scenario. Exit status 1 after the first
failure.

A "stop" that comes when the search has just ended by itself repeats the answer without a ponder
move (or says 0000 after "position"); such a repetition is counted, not a fault.
"""

import argparse
import random
import sys
import tempfile
import time

import sanitizers
from chess_rules import Position, START_FEN
from host import stolen_time
from positions import MIDDLEGAMES
from uci_client import Engine, EngineError, signal_name

POSITIONS = MIDDLEGAMES + [
    START_FEN,
    "8/8/8/8/8/4k3/4p3/4K3 w - - 0 1",  # stalemate: nothing to search
    "7k/5Q2/5K2/8/8/8/8/8 w - - 0 1",  # mate in one
    "8/k7/3p4/p2P1p2/P2P1P2/8/8/K7 w - - 0 1",
    "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
]


class Failure(Exception):
    """What the engine must not do."""


class Stress:
    def __init__(self, engine, args):
        self.engine = engine
        self.args = args
        self.random = random.Random(args.seed)
        self.legal = {fen: Position(fen).legal_moves() or ["0000", "(none)"] for fen in POSITIONS}
        self.searches = self.repeats = 0
        self.slowest = 0.0

    # One round's tools.

    def position(self):
        fen = self.random.choice(POSITIONS)
        return fen, f"position fen {fen}"

    def expect_answer(self, fen, since, budget=0.0):
        """Waits for the bestmove, due within the limit after `since` plus the budget."""
        self.searches += 1
        stolen = stolen_time()
        deadline = since + budget + self.args.patience
        while True:
            moment, text = self.engine.line(deadline - time.monotonic())
            if text.startswith("bestmove"):
                break
        late = moment - since - budget
        self.slowest = max(self.slowest, late)
        if late > self.args.limit:
            stolen = stolen_time() - stolen
            raise Failure(
                f"bestmove came {late:.2f} s after it was due; "
                f"the host took {stolen:.2f} s of processor time meanwhile"
            )
        move = text.split()[1].lower()
        if move not in self.legal[fen]:
            raise Failure(f"{text} in {fen}")
        return move

    def expect_quiet(self, move, stops):
        """No further bestmove, but for the repetitions that late stops may ask for."""
        self.engine.send("isready")
        texts = self.engine.until("readyok", self.args.patience)
        extra = [text for text in texts if text.startswith("bestmove")]
        if len(extra) > stops or any(t.lower() != f"bestmove {move}" for t in extra):
            raise Failure(f"more answers than searches: {extra} after {move}")
        self.repeats += len(extra)

    # The scenarios: each plays one round.

    def infinite_stop(self):
        """"go infinite" and "stop" in one piece."""
        fen, position = self.position()
        self.engine.send(position, "go infinite", "stop")
        self.expect_quiet(self.expect_answer(fen, time.monotonic()), 1)

    def movetime_stop(self):
        """"stop" around the moment when a search of 5 ms ends by itself."""
        fen, position = self.position()
        self.engine.send(position, "go movetime 5")
        time.sleep(self.random.uniform(0, 0.010))
        self.engine.send("stop")
        self.expect_quiet(self.expect_answer(fen, time.monotonic()), 1)

    def ponder_hit(self):
        """"ponderhit" after 0 to 50 ms of pondering on a clock of a second."""
        fen, position = self.position()
        self.engine.send(position, "go ponder wtime 1000 btime 1000 winc 10 binc 10")
        time.sleep(self.random.uniform(0, 0.050))
        self.engine.send("ponderhit")
        self.expect_quiet(self.expect_answer(fen, time.monotonic(), 0.3), 0)

    def thread_change(self):
        """Another number of threads before every search, sometimes during it."""
        fen, position = self.position()
        before, during = (self.random.randint(1, self.args.threads) for _ in range(2))
        self.engine.set_option("Threads", before)
        self.engine.send(position, "go movetime 20")
        if self.random.random() < 0.3:
            self.engine.set_option("Threads", during)
        self.expect_quiet(self.expect_answer(fen, time.monotonic(), 0.02), 0)

    DISTURBANCES = (
        "isready",
        "setoption name Hash value 1",
        "setoption name Hash value 16",
        "setoption name Clear Hash",
        "setoption name MultiPV value 3",
        "setoption name MultiPV value 1",
        "setoption name eval.kingattack value 120",
        "setoption name eval.kingattack value 100",
        "setoption name Ponder value false",
        "setoption name SendPv value false",
        "setoption name SendPv value true",
        "ucinewgame",
        "perft 3",
        "divide 2",
        "fen 8/8/8/8/8/4k3/4p3/4K3 w - -",
        "e2e4",
        "%",
        "g",
        "mt 1",
        "book",
        "uci",
        "ponderhit",
    )

    def disturbed(self):
        """Options, console commands, "position" and further "go"s while a search runs."""
        fen, position = self.position()
        lines = [position, "go infinite"]
        for _ in range(self.random.randint(1, 8)):
            if self.random.random() < 0.2:
                fen, position = self.position()
                limit = self.random.choice(("infinite", "movetime 3", "ponder"))
                lines += [position, f"go {limit}"]
            else:
                lines.append(self.random.choice(self.DISTURBANCES))
        # Ended by a search whose answer is known to come.
        fen, position = self.position()
        lines += ["stop", position, "go infinite", "stop", "isready"]
        searches = sum(line.startswith("go ") for line in lines)
        for line in lines:
            self.engine.send(line)
            if self.random.random() < 0.3:
                time.sleep(self.random.uniform(0, 0.003))
        texts = self.engine.until("readyok", self.args.patience)
        for _ in range(sum(line == "isready" for line in lines) - 1):
            texts += self.engine.until("readyok", self.args.patience)
        answers = [t.split()[1].lower() for t in texts if t.startswith("bestmove")]
        # Stops and ponderhits may each repeat an answer; a "g" gives one of its own.
        spare = 2 + sum(line in ("ponderhit", "g") for line in lines)
        if not searches <= len(answers) <= searches + spare:
            raise Failure(f"{len(answers)} answers to {searches} searches: {lines}")
        if answers[-1] not in self.legal[fen]:
            raise Failure(f"bestmove {answers[-1]} in {fen}: {lines}")
        self.searches += searches
        self.repeats += len(answers) - searches

    def endurance(self):
        """Short searches of a fixed time, one behind the other."""
        fen, position = self.position()
        milliseconds = self.random.randint(1, 30)
        self.engine.send(position, f"go movetime {milliseconds}")
        self.expect_quiet(self.expect_answer(fen, time.monotonic(), milliseconds / 1000), 0)

    ROUNDS = {
        "infinite_stop": 2000,
        "movetime_stop": 2000,
        "ponder_hit": 500,
        "thread_change": 200,
        "disturbed": 200,
        "endurance": 2000,
    }

    def run(self, name):
        self.engine.send(
            f"setoption name Threads value {self.args.threads}",
            "setoption name MultiPV value 1",
            "setoption name SendPv value true",
            "setoption name Ponder value true",
        )
        self.engine.ready()
        self.searches = self.repeats = 0
        self.slowest = 0.0
        started = time.monotonic()
        for number in range(max(1, round(self.ROUNDS[name] * self.args.scale))):
            try:
                getattr(self, name)()
            except (Failure, EngineError) as error:
                raise Failure(f"{name}, round {number + 1}: {error}") from error
        print(
            f"{name}: {self.searches} searches answered, {self.repeats} repeated answers, "
            f"slowest answer {self.slowest * 1000:.0f} ms late, {time.monotonic() - started:.0f} s",
            flush=True,
        )


def argument_parser():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("engine")
    parser.add_argument("--threads", type=int, default=2)
    parser.add_argument("--cpus", help="processors to pin the engine to, as for taskset -c")
    parser.add_argument("--scale", type=float, default=1.0)
    parser.add_argument("--only", action="append", choices=list(Stress.ROUNDS))
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--limit", type=float, default=1.0, help="seconds from stop to answer")
    parser.add_argument("--patience", type=float, default=60.0, help="longest silence, seconds")
    return parser


def main():
    args = argument_parser().parse_args()

    prefix = ["taskset", "-c", args.cpus] if args.cpus else []
    print(f"threads {args.threads}, processors {args.cpus or 'all'}, seed {args.seed}")
    status = 0
    with tempfile.TemporaryDirectory(prefix="stress") as folder:
        engine = Engine(
            prefix + [args.engine],
            {"Hash": 16},
            cwd=folder,
            name="engine",
            timeout=args.patience,
            env=sanitizers.environment(folder),
        )
        try:
            stress = Stress(engine, args)
            for name in args.only or Stress.ROUNDS:
                stress.run(name)
        except Failure as failure:
            print(f"FAILED: {failure}")
            status = 1
        ended = engine.end_input(60)
        if ended != 0:
            print(f"FAILED: the engine ended with {signal_name(ended)}")
            status = 1
        for report in sanitizers.reports(folder):
            print(report)
            status = 1
    return status


if __name__ == "__main__":
    sys.exit(main())
