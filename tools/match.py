#!/usr/bin/env python3
"""A match between two UCI engines, with a strict referee.

  tools/match.py [--games N] [--jobs N] [--tc BASE+INC | --tc MOVES/BASE | --movetime S]
                 [--openings FILE] [--slack MS] [--adjudicate] [--pgn FILE] ENGINE1 ENGINE2

Each opening is played twice with colours changed; --openings takes the first eight plies of each
line of a file like data/openings.txt. Games end by the rules, or with --adjudicate also when both
engines have agreed for long enough that one side has won or that nobody will. Every move's legality
and every clock is checked; an illegal move, a lost clock or a crash loses the game and is counted.
--pgn keeps the games, with score, depth and time behind each move.
Options for one engine: --option1 Threads=2 --option2 Hash=64 (repeatable); names: --name1, --name2.
"""

import argparse
import math
import multiprocessing
import pathlib
import sys
import textwrap
import time

from chess_rules import Position
from positions import OPENINGS
from uci_client import Engine, EngineError, signal_name

# Plies of an opening from a file.
OPENING_PLIES = 8
# Both engines see the game as won when their last scores say so, in centipawns, for as many plies,
# or as drawn from some ply on.
WON_SCORE, WON_PLIES = 600, 8
DRAWN_SCORE, DRAWN_PLIES, DRAWN_FROM = 8, 16, 100


class Clock:
    """The time control of one side: base seconds for the game, or for each so many moves."""

    def __init__(self, control, slack=0.0):
        self.base, self.increment, self.period = control
        self.slack = slack
        self.left = self.base
        self.to_go = self.period

    def spend(self, seconds):
        """Takes the time for one move off; False when the flag fell."""
        self.left -= seconds
        if self.left < -self.slack:
            return False
        self.left = max(self.left, 0.0) + self.increment
        if self.period:
            self.to_go -= 1
            if self.to_go == 0:
                self.to_go = self.period
                self.left += self.base
        return True


def parse_control(text):
    """(base, increment, moves a period or 0): "10+0.1", "40/20" or "5"."""
    moves, _, rest = text.rpartition("/")
    base, _, increment = rest.partition("+")
    return float(base), float(increment or 0), int(moves or 0)


def limits_of(clocks, white, movetime):
    if movetime:
        return f"movetime {round(movetime * 1000)}"
    parts = []
    for name, clock in zip("wb", clocks):
        parts.append(f"{name}time {max(1, int(clock.left * 1000))}")
        parts.append(f"{name}inc {round(clock.increment * 1000)}")
    own = clocks[0 if white else 1]
    return " ".join(parts + ([f"movestogo {own.to_go}"] if own.period else []))


class Game:
    """One game from an opening; players by colour, White first."""

    def __init__(self, players, opening, control, args):
        self.players = players
        self.position = Position()
        self.moves = []
        self.san = []  # behind an engine's move what it says of it, as a comment
        self.clocks = [Clock(control, args.slack / 1000) for _ in range(2)]
        self.movetime = args.movetime
        self.max_plies = args.max_plies
        self.scores = [] if args.adjudicate else None  # White's view, a number for each ply
        for move in opening.split():
            self.make(move)

    def make(self, move):
        self.san.append(self.position.san(move))
        self.position.push(move)
        self.moves.append(move)

    def lost(self, reason):
        return ("0-1" if self.position.white else "1-0"), reason

    def play(self):
        """(result, reason)."""
        for player in self.players:
            player.send("ucinewgame")
            player.ready()
        while True:
            outcome = self.position.outcome()
            if outcome:
                return outcome
            if len(self.moves) >= self.max_plies:
                return "1/2-1/2", "too long"
            failure = self.half_move()
            if failure:
                return self.lost(failure)
            verdict = self.scores and self.verdict()
            if verdict:
                return verdict, "adjudicated"

    def verdict(self):
        """The result on which both engines have agreed for long, or None."""
        last = self.scores[-WON_PLIES:]
        if len(last) == WON_PLIES and min(map(abs, last)) >= WON_SCORE:
            if min(last) > 0:
                return "1-0"
            if max(last) < 0:
                return "0-1"
        last = self.scores[-DRAWN_PLIES:]
        if len(self.moves) >= DRAWN_FROM and len(last) == DRAWN_PLIES:
            if max(map(abs, last)) <= DRAWN_SCORE:
                return "1/2-1/2"
        return None

    def half_move(self):
        """Asks for one move and makes it; what went wrong, or None."""
        side = 0 if self.position.white else 1
        clock = self.clocks[side]
        limits = limits_of(self.clocks, self.position.white, self.movetime)
        patience = (self.movetime or clock.left) + 10
        try:
            played = "startpos moves " + " ".join(self.moves)
            answer = self.players[side].go(limits, played, patience)
        except EngineError as error:
            return f"crash: {error}"
        if self.movetime:
            if answer.seconds > self.movetime + 1:
                return f"time forfeit: {answer.seconds:.2f} s for a move"
        elif not clock.spend(answer.seconds):
            took = f"{answer.seconds:.3f} s with {clock.left + answer.seconds:.3f} s left"
            return f"time forfeit: {took}"
        if answer.move not in self.position.legal_moves():
            return f"illegal move: {answer.move} in {self.position.fen()}"
        score = answer.score() or 0
        if self.scores is not None:
            self.scores.append(score if self.position.white else -score)
        self.make(answer.move)
        self.san[-1] += f" {{{score / 100:+.2f}/{answer.last('depth')} {answer.seconds:.2f}s}}"
        return None

    def pgn(self, number, result, reason):
        tags = {
            "Event": "match",
            "Site": "?",
            "Date": time.strftime("%Y.%m.%d"),
            "Round": str(number),
            "White": self.players[0].name,
            "Black": self.players[1].name,
            "Result": result,
            "Termination": reason,
        }
        words = " ".join(
            (f"{ply // 2 + 1}. " if ply % 2 == 0 else "") + san for ply, san in enumerate(self.san)
        )
        text = textwrap.fill(f"{words} {result}", 100, break_on_hyphens=False)
        head = "".join(f'[{key} "{value}"]\n' for key, value in tags.items())
        return f"{head}\n{text}\n\n"


FAULTS = ("illegal move", "time forfeit", "crash")


class Match:
    """The engines, restarted when one has died, and the games between them."""

    def __init__(self, args):
        self.args = args
        self.control = parse_control(args.tc)
        self.openings = read_openings(args.openings) if args.openings else OPENINGS
        self.engines = [None, None]

    def engine(self, index):
        if self.engines[index] is None or not self.engines[index].is_alive():
            command = (self.args.engine1, self.args.engine2)[index]
            options = dict(o.split("=", 1) for o in (self.args.option1, self.args.option2)[index])
            name = (self.args.name1, self.args.name2)[index]
            self.engines[index] = Engine(command, options, name=name)
        return self.engines[index]

    def play(self, number):
        first_is_white = number % 2 == 0
        order = (0, 1) if first_is_white else (1, 0)
        opening = self.openings[number // 2 % len(self.openings)]
        players = [self.engine(i) for i in order]
        game = Game(players, opening, self.control, self.args)
        result, reason = game.play()
        if result != "1/2-1/2" and reason.split(":")[0] == "crash":
            self.bury(order[1 if result == "1-0" else 0])
        names = f"{players[0].name} - {players[1].name}"
        text = f"game {number + 1}: {names} {result} ({reason}, {len(game.moves)} plies)"
        if self.args.pgn:
            with open(self.args.pgn, "a", encoding="utf-8") as file:
                file.write(game.pgn(number + 1, result, reason))
        return text, result, reason, order

    def bury(self, index):
        broken, self.engines[index] = self.engines[index], None
        broken.process.kill()
        print(f"{broken.name}: {signal_name(broken.quit())}", flush=True)

    def close(self):
        for engine in self.engines:
            if engine:
                engine.quit()


class Score:
    """The result of the match so far, from the first engine's view."""

    def __init__(self):
        self.wins = self.draws = self.losses = 0
        self.faults = {(e, f): 0 for e in (0, 1) for f in FAULTS}
        self.reasons = {}

    def add(self, result, reason, order):
        kind = reason.split(":")[0]
        self.reasons[kind] = self.reasons.get(kind, 0) + 1
        if result == "1/2-1/2":
            self.draws += 1
            return
        winner = order[0 if result == "1-0" else 1]
        if winner == 0:
            self.wins += 1
        else:
            self.losses += 1
        if kind in FAULTS:
            self.faults[(1 - winner, kind)] += 1

    def report(self, names):
        games = self.wins + self.draws + self.losses
        points = self.wins + self.draws / 2
        score = f"{points:g} of {games} (+{self.wins} ={self.draws} -{self.losses})"
        print(f"{names[0]} against {names[1]}: {score}")
        low, middle, high = rating_difference(self.wins, self.draws, self.losses)
        print(f"rating difference: {middle:+.0f}, 95 % interval {low:+.0f} to {high:+.0f}")
        print("ends: " + ", ".join(f"{count} {why}" for why, count in sorted(self.reasons.items())))
        for index in (0, 1):
            counts = ", ".join(f"{f} {self.faults[(index, f)]}" for f in FAULTS)
            print(f"faults of {names[index]}: {counts}")


def rating_difference(wins, draws, losses):
    """(low, middle, high): the points that the score means, and its 95 % interval."""
    games = wins + draws + losses
    mean = (wins + draws / 2) / games
    variance = (wins * (1 - mean) ** 2 + draws * (0.5 - mean) ** 2 + losses * mean**2) / games
    margin = 1.96 * math.sqrt(variance / games)

    def points(share):
        share = min(max(share, 0.001), 0.999)
        return 400 * math.log10(share / (1 - share))

    return points(mean - margin), points(mean), points(mean + margin)


def play_share(args, job, results, after_game):
    """Plays every game whose number belongs to the job; the outcomes go into the queue."""
    match = Match(args)
    try:
        for number in range(job, args.games, args.jobs):
            results.put(match.play(number))
            if after_game:
                after_game(job, match.engines)
    finally:
        match.close()
        results.put(None)


def play_match(args, after_game=None):
    """Plays all games, as many at a time as there are jobs. Each job is a process of its own, so
    that one game's bookkeeping takes nothing from another's clock; there after_game is called with
    the job's number and its two engines (None for one that has died) after each game."""
    score = Score()
    results = multiprocessing.Queue()
    jobs = [
        multiprocessing.Process(target=play_share, args=(args, job, results, after_game))
        for job in range(args.jobs)
    ]
    for job in jobs:
        job.start()
    left = len(jobs)
    while left:
        outcome = results.get()
        if outcome is None:
            left -= 1
            continue
        text, *end = outcome
        score.add(*end)
        print(f"{text}  {score.wins}-{score.losses}-{score.draws}", flush=True)
    for job in jobs:
        job.join()
    return score


def read_openings(path):
    """The different beginnings of the lines of the file, in coordinates."""
    openings = []
    for line in pathlib.Path(path).read_text(encoding="utf-8").splitlines():
        words = line.split("#")[0].split()[1:]
        position, moves = Position(), []
        for word in words[:OPENING_PLIES]:
            moves.append(position.parse_san(word))
            position.push(moves[-1])
        if len(moves) == OPENING_PLIES and " ".join(moves) not in openings:
            openings.append(" ".join(moves))
    return openings


def argument_parser():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("engine1")
    parser.add_argument("engine2")
    parser.add_argument("--games", type=int, default=20)
    parser.add_argument("--jobs", type=int, default=1, help="games at a time")
    parser.add_argument("--tc", default="10+0.1", help="seconds: BASE+INC or MOVES/BASE")
    parser.add_argument("--movetime", type=float, help="seconds a move, in place of a clock")
    parser.add_argument("--max-plies", type=int, default=600, help="longer games are drawn")
    parser.add_argument("--openings", help="a file of opening lines, in place of the usual ones")
    parser.add_argument(
        "--slack", type=float, default=50, help="ms that a clock may be over, for process switches"
    )
    parser.add_argument("--adjudicate", action="store_true", help="end decided games early")
    parser.add_argument("--pgn", help="append the games to this file")
    for n in (1, 2):
        parser.add_argument(f"--option{n}", action="append", default=[], metavar="NAME=VALUE")
        parser.add_argument(f"--name{n}")
    return parser


def main():
    args = argument_parser().parse_args()
    score = play_match(args)
    score.report((args.name1 or args.engine1, args.name2 or args.engine2))
    return 1 if any(count for (engine, _), count in score.faults.items() if engine == 0) else 0


if __name__ == "__main__":
    sys.exit(main())
