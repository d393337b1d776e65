#!/usr/bin/env python3
"""Speed as ratios to other engines, measured in turn in one run on one machine.

  tools/speed_compare.py [--runs R] [--movetime S] QUILL

Perft of a rich position at depth 5 against stockfish's "go perft"; nodes per second of a search
with one thread on five middle-game positions against toga2 and glaurung. Engines that are not
installed are left out. A claim of speed quotes the lowest, the median and the highest ratio.
"""

import argparse
import os
import re
import subprocess
import tempfile
import time
from statistics import median

from positions import MIDDLEGAMES
from uci_client import Engine

PERFT_FEN = "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -"
PERFT_DEPTH = 5
PERFT_COUNT = 193690690


def quill_perft(program):
    """Seconds of the console's perft, by its own clock."""
    commands = f"fen {PERFT_FEN}\nperft {PERFT_DEPTH}\nquit\n"
    with tempfile.TemporaryDirectory(prefix="engine") as folder:
        output = subprocess.run(
            [os.path.abspath(program)],
            input=commands,
            capture_output=True,
            text=True,
            check=True,
            cwd=folder,
        ).stdout
    match = re.search(r"perft \d+\s+(\d+) ops in ([\d.]+) seconds", output)
    if not match or int(match.group(1)) != PERFT_COUNT:
        raise SystemExit(f"{program}: wrong perft: {match.group(0) if match else output}")
    return float(match.group(2))


def uci_perft(engine):
    """Seconds from "go perft" to its total."""
    engine.send(f"position fen {PERFT_FEN} 0 1")
    engine.ready()
    started = time.monotonic()
    engine.send(f"go perft {PERFT_DEPTH}")
    while True:
        moment, text = engine.line(120)
        if text.startswith("Nodes searched"):
            assert int(text.split()[-1]) == PERFT_COUNT, text
            return moment - started


def nodes_per_second(engine, fen, movetime):
    engine.clear()
    answer = engine.go(f"movetime {round(movetime * 1000)}", f"fen {fen}", movetime + 30)
    nodes, milliseconds = answer.last("nodes"), answer.last("time")
    return nodes / (milliseconds / 1000) if milliseconds >= 100 else nodes / answer.seconds


def spread(ratios):
    low, middle, high = min(ratios), median(ratios), max(ratios)
    return f"lowest {low:.2f}, median {middle:.2f}, highest {high:.2f} of {len(ratios)}"


def compare_perft(args):
    with Engine(args.stockfish) as rival:
        ratios = []
        for _ in range(args.runs):
            own = quill_perft(args.quill)
            ratios.append(uci_perft(rival) / own)
    print(f"perft speed, quill / {rival.name}: {spread(ratios)}", flush=True)


def compare_search(args, rivals):
    programs = [args.quill] + rivals
    engines = [Engine(p, {"Hash": 64, "Threads": 1, "OwnBook": "false"}) for p in programs]
    ratios = {engine.name: [] for engine in engines[1:]}
    try:
        for _ in range(args.runs):
            for fen in MIDDLEGAMES[:5]:
                speeds = [nodes_per_second(engine, fen, args.movetime) for engine in engines]
                for engine, speed in zip(engines[1:], speeds[1:]):
                    ratios[engine.name].append(speeds[0] / speed)
    finally:
        for engine in engines:
            engine.quit()
    for name, values in ratios.items():
        print(f"nodes per second, quill / {name}: {spread(values)}")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("quill")
    parser.add_argument("--runs", type=int, default=3)
    parser.add_argument("--movetime", type=float, default=2.0, help="seconds a search")
    parser.add_argument("--stockfish", default="/usr/games/stockfish")
    parser.add_argument("--rival", action="append", help="default: toga2 and glaurung")
    args = parser.parse_args()

    rivals = args.rival or ["/usr/games/toga2", "/usr/games/glaurung"]
    for program in [args.stockfish] + rivals:
        if not os.path.exists(program):
            print(f"{program} is not installed: left out")
    if os.path.exists(args.stockfish):
        compare_perft(args)
    rivals = [program for program in rivals if os.path.exists(program)]
    if rivals:
        compare_search(args, rivals)


if __name__ == "__main__":
    main()
