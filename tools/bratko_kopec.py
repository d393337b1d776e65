#!/usr/bin/env python3
"""The 24 Bratko-Kopec positions: how many does an engine solve in a fixed time each?

  tools/bratko_kopec.py [--time SECONDS] [--threads N] ENGINE

A position is solved when the move at the end of the search is one of those that the collection
names.
"""

import argparse
import pathlib

from chess_rules import Position
from uci_client import Engine

DATA = pathlib.Path(__file__).parent / "data" / "bratko_kopec.epd"


def read_epd(path=DATA):
    """(id, FEN, the best moves in coordinates) of each line."""
    for line in path.read_text().splitlines():
        fields, operations = " ".join(line.split()[:4]), line.split(maxsplit=4)[4]
        values = dict(part.strip().split(" ", 1) for part in operations.split(";") if part.strip())
        fen = fields + " 0 1"
        position = Position(fen)
        yield values["id"].strip('"'), fen, [position.parse_san(m) for m in values["bm"].split()]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("engine")
    parser.add_argument("--time", type=float, default=1.0, help="seconds a position")
    parser.add_argument("--threads", type=int, default=1)
    parser.add_argument("--hash", type=int, default=64, help="MB")
    args = parser.parse_args()

    solved = total = 0
    options = {"Threads": args.threads, "Hash": args.hash, "OwnBook": "false"}
    with Engine(args.engine, options) as engine:
        for name, fen, best in read_epd():
            engine.clear()
            answer = engine.go(f"movetime {round(args.time * 1000)}", f"fen {fen}", args.time + 30)
            right = answer.move in best
            solved += right
            total += 1
            print(
                f"{name} {'solved' if right else '-':7}{answer.move:6} wanted {' '.join(best):12}"
                f"depth {answer.last('depth'):3}  score {answer.score()}"
            )
    print(f"{solved} of {total} solved at {args.time:g} s a position, {args.threads} thread(s)")


if __name__ == "__main__":
    main()
