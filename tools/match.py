#!/usr/bin/env python3
"""A match between two UCI engines, with a strict referee.

  tools/match.py [--games N] [--tc BASE+INC | --tc MOVES/BASE | --movetime S] [--pgn FILE]
                 ENGINE1 ENGINE2

Each opening is played twice with colours changed. Games end by the rules only. Every move's
legality and every clock is checked; an illegal move, a lost clock or a crash loses the game and is
counted. Options for one engine: --option1 Threads=2 --option2 Hash=64 (repeatable); names: --name1,
--name2.
"""

import argparse
import sys
import time

from chess_rules import Position
from positions import OPENINGS
from uci_client import Engine, EngineError, signal_name

# What a process switch may cost an engine that answers in time, in seconds.
CLOCK_SLACK = 0.05


class Clock:
    """The time control of one side: base seconds for the game, or for each so many moves."""

    def __init__(self, control):
        self.base, self.increment, self.period = control
        self.left = self.base
        self.to_go = self.period

    def spend(self, seconds):
        """Takes the time for one move off; False when the flag fell."""
        self.left -= seconds
        if self.left < -CLOCK_SLACK:
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
        parts.append(f"{name}time {max(1, round(clock.left * 1000))}")
        parts.append(f"{name}inc {round(clock.increment * 1000)}")
    own = clocks[0 if white else 1]
    return " ".join(parts + ([f"movestogo {own.to_go}"] if own.period else []))


class Game:
    """One game from an opening; players by colour, White first."""

    def __init__(self, players, opening, control, movetime, max_plies):
        self.players = players
        self.position = Position()
        self.moves = []
        self.san = []
        self.clocks = [Clock(control), Clock(control)]
        self.movetime = movetime
        self.max_plies = max_plies
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
            return f"time forfeit: {-clock.left:.2f} s over"
        if answer.move not in self.position.legal_moves():
            return f"illegal move: {answer.move} in {self.position.fen()}"
        self.make(answer.move)
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
        text = ""
        for ply, san in enumerate(self.san):
            text += (f"{ply // 2 + 1}. " if ply % 2 == 0 else "") + san + " "
            if ply % 16 == 15:
                text = text.rstrip() + "\n"
        head = "".join(f'[{key} "{value}"]\n' for key, value in tags.items())
        return f"{head}\n{text}{result}\n\n"


class Match:
    """The engines, restarted when one has died, and the score from the first one's view."""

    FAULTS = ("illegal move", "time forfeit", "crash")

    def __init__(self, args):
        self.args = args
        self.control = parse_control(args.tc)
        self.engines = [None, None]
        self.wins = self.draws = self.losses = 0
        self.faults = {(e, f): 0 for e in (0, 1) for f in self.FAULTS}
        self.reasons = {}

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
        opening = OPENINGS[number // 2 % len(OPENINGS)]
        players = [self.engine(i) for i in order]
        game = Game(players, opening, self.control, self.args.movetime, self.args.max_plies)
        result, reason = game.play()
        self.score(result, reason, order)
        print(
            f"game {number + 1}: {players[0].name} - {players[1].name} {result} ({reason}, "
            f"{len(game.moves)} plies)  {self.wins}-{self.losses}-{self.draws}",
            flush=True,
        )
        if self.args.pgn:
            with open(self.args.pgn, "a", encoding="utf-8") as file:
                file.write(game.pgn(number + 1, result, reason))

    def score(self, result, reason, order):
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
        if kind in self.FAULTS:
            self.faults[(1 - winner, kind)] += 1
            broken = self.engines[1 - winner]
            if kind == "crash":
                broken.process.kill()
                print(f"{broken.name}: {signal_name(broken.quit())}")
                self.engines[1 - winner] = None

    def report(self):
        games = self.wins + self.draws + self.losses
        points = self.wins + self.draws / 2
        names = [self.engine(i).name for i in (0, 1)]
        score = f"{points:g} of {games} (+{self.wins} ={self.draws} -{self.losses})"
        print(f"{names[0]} against {names[1]}: {score}")
        print("ends: " + ", ".join(f"{count} {why}" for why, count in sorted(self.reasons.items())))
        for index in (0, 1):
            counts = ", ".join(f"{f} {self.faults[(index, f)]}" for f in self.FAULTS)
            print(f"faults of {names[index]}: {counts}")

    def close(self):
        for engine in self.engines:
            if engine:
                engine.quit()


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("engine1")
    parser.add_argument("engine2")
    parser.add_argument("--games", type=int, default=20)
    parser.add_argument("--tc", default="10+0.1", help="seconds: BASE+INC or MOVES/BASE")
    parser.add_argument("--movetime", type=float, help="seconds a move, in place of a clock")
    parser.add_argument("--max-plies", type=int, default=600, help="longer games are drawn")
    parser.add_argument("--pgn", help="append the games to this file")
    for n in (1, 2):
        parser.add_argument(f"--option{n}", action="append", default=[], metavar="NAME=VALUE")
        parser.add_argument(f"--name{n}")
    args = parser.parse_args()

    match = Match(args)
    try:
        for number in range(args.games):
            match.play(number)
        match.report()
    finally:
        match.close()
    return 1 if any(count for (engine, _), count in match.faults.items() if engine == 0) else 0


if __name__ == "__main__":
    sys.exit(main())
