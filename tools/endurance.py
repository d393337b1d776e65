#!/usr/bin/env python3
"""Plays and searches for long, and tells whether an engine keeps its rules, clock and memory.

  tools/endurance.py games    [--games N] [--jobs N] [--tc BASE+INC] ENGINE
  tools/endurance.py longgame [--plies N] ENGINE
  tools/endurance.py rounds   [--rounds N] [--threads N] ENGINE
  tools/endurance.py analysis [--minutes M] [--hash MB] [--threads N] ENGINE

games: the engine against itself under the strict referee of match.py, the same processes from the
first game to the last; resident memory may not grow after their tenth game. longgame: a game that
goes on and on, sent whole before each of its moves, as a GUI does; each answer is checked. rounds:
"ucinewgame", "position", "go movetime 5" in one process, each answered once and in time. analysis:
"go infinite" until the table is full, then "stop".

ENGINE is a command, such as "build/release/quill modern.ini". Linux only. Exit status 1 when
something was wrong.
"""

import argparse
import multiprocessing
import pathlib
import random
import sys
import time

import match
import stress_search
from chess_rules import Position, square_of
from positions import MIDDLEGAMES
from uci_client import Engine, EngineError

# Memory may differ by as much: stacks that were used to another depth.
SPARE_KB = 1024
# A table counts as full from here on, in thousandths.
FULL = 990


def memory_of(engine):
    """(resident, all) memory of the process in KB; (0, 0) when it is gone."""
    try:
        text = pathlib.Path(f"/proc/{engine.process.pid}/status").read_text(encoding="utf-8")
    except OSError:
        return 0, 0
    lines = dict(line.split(":", 1) for line in text.splitlines())
    return tuple(int(lines[key].split()[0]) if key in lines else 0 for key in ("VmRSS", "VmSize"))


class Verdict:
    """Prints each finding; status is 1 after the first that was wrong."""

    def __init__(self):
        self.status = 0

    def expect(self, condition, text):
        if not condition:
            self.status = 1
        print(f"{'ok' if condition else 'FAILED'}: {text}", flush=True)


# Games.


def compare_memory(samples, since):
    """[(job, player, KB after so many of its games, KB at the end)] from (job, (KB, KB)) after each
    game; of jobs with fewer games, from their first."""
    rows = []
    for job in sorted({job for job, _ in samples}):
        own = [sizes for number, sizes in samples if number == job]
        for player in (0, 1):
            first = own[min(since, len(own)) - 1 if len(own) > since else 0]
            rows.append((job, player, first[player], own[-1][player]))
    return rows


def play_games(args, verdict):
    words = ["--games", args.games, "--jobs", args.jobs, "--tc", args.tc, "--slack", args.slack]
    names = ["--name1", "first", "--name2", "second"]
    match_args = match.argument_parser().parse_args(
        [str(word) for word in words + names + [args.engine, args.engine]]
    )
    queue = multiprocessing.Manager().list()

    def after_game(job, engines):
        queue.append((job, tuple(memory_of(engine)[0] if engine else 0 for engine in engines)))

    score = match.play_match(match_args, after_game)
    score.report((match_args.name1, match_args.name2))
    games = score.wins + score.draws + score.losses
    verdict.expect(games == args.games, f"{games} of {args.games} games were played")
    for fault in match.FAULTS:
        count = score.faults[(0, fault)] + score.faults[(1, fault)]
        verdict.expect(count == 0, f"{fault}: {count}")
    for job, player, early, late in compare_memory(list(queue), args.since):
        text = f"memory of {'first' if player == 0 else 'second'}, job {job}: {early} KB, {late} KB"
        verdict.expect(0 < late <= early + SPARE_KB, text)


# A long game.


def endless_game(plies, seed):
    """(moves, legal moves before each) of a game of so many plies that mate and stalemate don't
    end: men are taken and pawns moved only rarely."""
    chance, position = random.Random(seed), Position()
    moves, legal = [], []
    while len(moves) < plies:
        legal.append(position.legal_moves())
        irreversible = {m for m in legal[-1] if position.board[square_of(m[2:4])] or
                        position.board[square_of(m)] in ("P", "p")}
        quiet = [m for m in legal[-1] if m not in irreversible]
        order = chance.sample(legal[-1], len(legal[-1]))
        if chance.random() > 0.02:
            order.sort(key=lambda m: m not in quiet)
        for move in order:
            after = Position(position.fen())
            after.push(move)
            if after.legal_moves() and not after.lacks_material():
                break
        position.push(move)
        moves.append(move)
    return moves, legal


def replay_long_game(args, verdict):
    moves, legal = endless_game(args.plies, args.seed)
    wrong, slowest = [], 0.0
    with Engine(args.engine, {"OwnBook": "false"}) as engine:
        for ply, possible in enumerate(legal):
            answer = engine.go("nodes 200", "startpos moves " + " ".join(moves[:ply]))
            slowest = max(slowest, answer.seconds)
            if answer.move not in possible:
                wrong.append(f"{answer.move} at ply {ply}")
        engine.ready()
        sizes = memory_of(engine)
    text = f"{len(legal)} positions, answers that are not legal: {wrong[:3] or 0}"
    verdict.expect(not wrong, text)
    verdict.expect(slowest < args.limit, f"slowest answer after {slowest * 1000:.0f} ms")
    print(f"memory at the end: {sizes[0]} KB")


# Rounds of short searches.


class Rounds(stress_search.Stress):
    """Each round a new game with one search of five milliseconds."""

    rounds = 0
    early = None  # memory after the first thousand

    def new_game(self):
        fen, position = self.position()
        self.engine.send("ucinewgame", position, "go movetime 5")
        self.expect_quiet(self.expect_answer(fen, time.monotonic(), 0.005), 0)
        self.rounds += 1
        if self.rounds == 1000:
            self.early = memory_of(self.engine)


def search_rounds(args, verdict):
    stress_args = stress_search.argument_parser().parse_args(
        ["--threads", str(args.threads), "--limit", str(args.limit), "--seed", str(args.seed), "-"]
    )
    with Engine(args.engine, {"OwnBook": "false"}, timeout=60) as engine:
        rounds = Rounds(engine, stress_args)
        rounds.ROUNDS = {"new_game": args.rounds}
        try:
            rounds.run("new_game")
        except stress_search.Failure as failure:
            verdict.expect(False, str(failure))
        text = f"{rounds.rounds} of {args.rounds} rounds with {args.threads} threads answered once"
        verdict.expect(rounds.rounds == args.rounds, text)
        late = memory_of(engine)
        if rounds.early:
            text = f"memory after 1000 rounds {rounds.early[0]} KB, at the end {late[0]} KB"
            verdict.expect(late[0] <= rounds.early[0] + SPARE_KB, text)


# An analysis.


def analyse(args, verdict):
    options = {"Hash": args.hash, "Threads": args.threads, "OwnBook": "false"}
    with Engine(args.engine, options, timeout=120) as engine:
        engine.send(f"position fen {MIDDLEGAMES[0]}", "go infinite")
        started, hashfull, line, full_after, sizes = time.monotonic(), 0, "", None, []
        while (passed := time.monotonic() - started) < args.minutes * 60:
            try:
                _, text = engine.line(min(5.0, args.minutes * 60 - passed))
            except EngineError:
                if not engine.is_alive():
                    raise
                text = ""
            words = text.split()
            if "hashfull" in words:
                hashfull = int(words[words.index("hashfull") + 1])
                if hashfull >= FULL and full_after is None:
                    full_after = passed
            if "pv" in words:
                line = text
            if not sizes or passed >= sizes[-1][0] + 5:
                sizes.append((passed, *memory_of(engine)))
        engine.send("stop")
        answer = engine.answer(time.monotonic(), 60)
    print(line)
    when = "" if full_after is None else f", full after {full_after:.0f} s"
    verdict.expect(hashfull >= FULL, f"table of {args.hash} MB filled to {hashfull}/1000{when}")
    # The threads have begun with the first samples.
    virtual = [size for moment, _, size in sizes if moment >= min(5, args.minutes * 30)]
    verdict.expect(max(virtual) <= virtual[0] + SPARE_KB,
                   f"address space {virtual[0]} KB at first, at most {max(virtual)} KB")
    full = [kb for moment, kb, _ in sizes if full_after is not None and moment >= full_after]
    if full:
        verdict.expect(max(full) <= full[0] + SPARE_KB,
                       f"memory with the table full {full[0]} KB, at most {max(full)} KB")
    print(f"memory at the end: {sizes[-1][1]} KB")
    legal = Position(MIDDLEGAMES[0]).legal_moves()
    verdict.expect(answer.move in legal, f"bestmove {answer.move}")
    verdict.expect(answer.seconds < args.limit, f"{answer.seconds * 1000:.0f} ms after \"stop\"")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parts = parser.add_subparsers(required=True)

    def add(name, work, **numbers):
        part = parts.add_parser(name)
        part.add_argument("engine")
        part.add_argument("--limit", type=float, default=1.0, help="seconds to an answer")
        part.add_argument("--seed", type=int, default=1)
        for option, default in numbers.items():
            part.add_argument(f"--{option}", type=type(default), default=default)
        part.set_defaults(work=work)

    add("games", play_games, games=1000, jobs=2, tc="1+0.01", slack=0.0, since=10)
    add("longgame", replay_long_game, plies=3000)
    add("rounds", search_rounds, rounds=10000, threads=1)
    add("analysis", analyse, minutes=10.0, hash=4096, threads=16)
    args = parser.parse_args()
    verdict = Verdict()
    try:
        args.work(args, verdict)
    except EngineError as error:
        verdict.expect(False, str(error))
    return verdict.status


if __name__ == "__main__":
    sys.exit(main())
