#!/usr/bin/env python3
"""What a second thread gains: time to a fixed depth with one and with several threads.

  tools/time_to_depth.py [--depth D] [--threads N] [--runs R] [--stolen P] ENGINE

Twenty middle-game positions. Every run starts with cleared tables; runs with one and with N threads
take turns, so that both meet the same state of the machine. For each position: the median times,
the gain (time with one thread / time with N) and the gain in nodes per second; then the medians
over all.

A run from which the host of a virtual machine took more than --stolen percent of a processor's time
says nothing about the engine: it is made again, up to ten times, and then taken as it is.
"""

import argparse
import math
from statistics import median

from host import stolen_time
from positions import MIDDLEGAMES
from uci_client import Engine


def measure(engine, fen, depth, patience):
    """(seconds, nodes per second) of one search from cleared tables."""
    engine.clear()
    limits = f"depth {depth} movetime {round(patience * 1000)}"
    answer = engine.go(limits, f"fen {fen}", patience + 30)
    # The engine's own clock where it is fine enough, else ours.
    seconds = answer.last("time") / 1000
    seconds = seconds if seconds >= 0.1 else answer.seconds
    return seconds, answer.last("nodes") / seconds


class Runs:
    """Makes the measurements, and again those that the host disturbed."""

    TRIES = 10
    TICK = 0.01  # seconds: stolen time comes in these

    def __init__(self, limit):
        self.limit = limit  # percent of one processor's time
        self.repeated = self.disturbed = 0

    def undisturbed(self, run):
        """The first (seconds, nps) of run() that was not disturbed, or the last of ten."""
        for left in reversed(range(self.TRIES)):
            before = stolen_time()
            result = run()
            if stolen_time() - before <= self.TICK + self.limit / 100 * result[0]:
                return result
            if left:
                self.repeated += 1
        self.disturbed += 1
        return result


def gain_row(single, several):
    """Medians of both, gain in time and gain in speed, from two lists of (seconds, nps)."""
    one, many = (median(run[0] for run in runs) for runs in (single, several))
    speed = median(run[1] for run in several) / median(run[1] for run in single)
    return one, many, one / many, speed


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("engine")
    parser.add_argument("--depth", type=int, default=14)
    parser.add_argument("--threads", type=int, default=2)
    parser.add_argument("--runs", type=int, default=3)
    parser.add_argument("--hash", type=int, default=128, help="MB")
    parser.add_argument("--positions", type=int, default=len(MIDDLEGAMES))
    parser.add_argument("--patience", type=float, default=600, help="seconds for one search")
    parser.add_argument("--stolen", type=float, default=math.inf, help="percent; none: any")
    args = parser.parse_args()

    counts = (1, args.threads)
    options = {"Hash": args.hash, "OwnBook": "false"}
    engines = [Engine(args.engine, {"Threads": n, **options}) for n in counts]
    maker = Runs(args.stolen)
    rows = []
    try:
        print(f"depth {args.depth}")
        print(f"position     1 thread  {args.threads} threads    gain  nps gain")
        for number, fen in enumerate(MIDDLEGAMES[: args.positions], 1):
            runs = ([], [])
            for turn in range(args.runs):
                for which in (0, 1) if turn % 2 == 0 else (1, 0):
                    engine = engines[which]
                    runs[which].append(
                        maker.undisturbed(lambda: measure(engine, fen, args.depth, args.patience))
                    )
            rows.append(gain_row(*runs))
            one, many, gain, speed = rows[-1]
            print(f"{number:8} {one:10.2f} s {many:8.2f} s {gain:7.2f} {speed:9.2f}", flush=True)
    finally:
        for engine in engines:
            engine.quit()
    gains = [row[2] for row in rows]
    print(
        f"median gain {median(gains):.2f}, lowest {min(gains):.2f}, highest {max(gains):.2f}; "
        f"median gain in nodes per second {median(row[3] for row in rows):.2f}"
    )
    if args.stolen < math.inf:
        print(f"{maker.repeated} runs made again, {maker.disturbed} disturbed ones left")


if __name__ == "__main__":
    main()
