#!/usr/bin/env python3
"""The files around a match under a GUI: the openings, and the report on the games.

  tools/gui_match_files.py openings
  tools/gui_match_files.py report GAMES.pgn ENGINE OPPONENT [--skip N] [--games N]
"""

import argparse
import re
import sys

from chess_rules import Position
from positions import OPENINGS

# What the GUI writes behind the moves of a game that did not end by the rules of the board.
FAULTS = {
    "illegal move": r"illegal|false (illegal|win|draw|result)|forfeit.*(move|claim)",
    "time forfeit": r"time|flag|clock",
    "crash": r"exit|died|crash|terminated|disconnect",
}


def opening_pgn(opening):
    position, text = Position(), ""
    for ply, move in enumerate(opening.split()):
        text += (f"{ply // 2 + 1}. " if ply % 2 == 0 else "") + position.san(move) + " "
        position.push(move)
    return f'[Event "opening"]\n[Result "*"]\n\n{text}*\n\n'


def read_games(text):
    """(tags, last comment) of each game."""
    for part in re.split(r"(?m)^(?=\[Event )", text):
        tags = dict(re.findall(r'^\[(\w+) "(.*)"\]$', part, re.M))
        if "Result" in tags:
            comments = re.findall(r"\{([^{}]*)\}", part)
            yield tags, " ".join(comments[-1].split()) if comments else ""


def fault_of(comment):
    """The kind of fault that a closing comment tells of, None for a proper end."""
    for kind, pattern in FAULTS.items():
        if re.search(pattern, comment, re.I):
            return kind
    return None


def summarise(games, engine):
    """(wins, draws, losses, unfinished, {(is_engine, fault): count}) from the engine's view.

    A fault belongs to the side that lost by it.
    """
    wins = draws = losses = unfinished = 0
    faults = {}
    for tags, comment in games:
        result, is_white = tags["Result"], tags.get("White") == engine
        won = result == ("1-0" if is_white else "0-1")
        if result == "1/2-1/2":
            draws += 1
        elif result == "*":
            unfinished += 1
        elif won:
            wins += 1
        else:
            losses += 1
        kind = fault_of(comment)
        if kind and result != "1/2-1/2":
            key = (not won, kind)
            faults[key] = faults.get(key, 0) + 1
    return wins, draws, losses, unfinished, faults


def report(args):
    with open(args.pgn, encoding="utf-8", errors="replace") as file:
        games = list(read_games(file.read()))[args.skip :]
    for number, (tags, comment) in enumerate(games, 1):
        players = f"{tags.get('White')} - {tags.get('Black')}"
        print(f"game {number}: {players} {tags['Result']} {comment}")
    wins, draws, losses, unfinished, faults = summarise(games, args.engine)
    score = f"{wins + draws / 2:g} of {len(games)} (+{wins} ={draws} -{losses})"
    print(f"{args.engine} against {args.opponent}: {score}")
    for is_engine, name in ((True, args.engine), (False, args.opponent)):
        counts = ", ".join(f"{kind} {faults.get((is_engine, kind), 0)}" for kind in FAULTS)
        print(f"faults of {name}: {counts}")
    missing = args.games - len(games) if args.games else 0
    if missing or unfinished:
        print(f"{missing} games missing, {unfinished} unfinished")
    own_faults = sum(count for (is_engine, _), count in faults.items() if is_engine)
    return 1 if own_faults or missing or unfinished else 0


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    commands = parser.add_subparsers(dest="command", required=True)
    commands.add_parser("openings")
    reporter = commands.add_parser("report")
    reporter.add_argument("pgn")
    reporter.add_argument("engine")
    reporter.add_argument("opponent")
    reporter.add_argument("--skip", type=int, default=0, help="old games at the file's start")
    reporter.add_argument("--games", type=int, default=0, help="games that there must be")
    args = parser.parse_args()
    if args.command == "openings":
        sys.stdout.writelines(opening_pgn(opening) for opening in OPENINGS)
        return 0
    return report(args)


if __name__ == "__main__":
    sys.exit(main())
