#!/usr/bin/env python3
"""What a second thread gains: time to a fixed depth with one and with several threads.

  tools/time_to_depth.py [--depth D | --seconds S] [--threads N] [--runs R] [--vary]
                         [--machine] [--stolen P] ENGINE

Twenty middle-game positions. Every run starts with cleared tables; runs with one and with N threads
take turns, so that both meet the same state of the machine. For each position: the median times,
the gain (time with one thread / time with N) and the gain in nodes per second; then the medians
over all.

With --seconds each position is searched to the first depth that takes one thread so long. In a
search of less than half a second, filling the caches of N threads and waiting for the first work
are a good part of the time.

One thread builds the same tree in every run, and a small change anywhere makes it up to twice as
large or as small, so that the gain of a position says as much about the luck of that one tree as
about threads. With --vary the runs of a position begin with different tables, the same for one and
for N threads: run r follows a search to depth 1 + r, which is not timed and small against it.

With --machine the last column is what the machine itself has to give: the nodes per second of N
engines with one thread each that search the position side by side, against those of one alone.

A run from which the host of a virtual machine took more than --stolen percent of a processor's time
says nothing about the engine: it is made again, up to ten times, and then taken as it is.
"""

import argparse
import math
from concurrent.futures import ThreadPoolExecutor
from statistics import median

from host import stolen_time
from positions import MIDDLEGAMES
from uci_client import Engine

DEEPEST = 60


def measure(engine, fen, depth, patience, before=0):
    """(seconds, nodes per second) of one search from cleared tables, or from what a search to the
    depth `before` leaves in them."""
    engine.clear()
    if before:
        engine.go(f"depth {before}", f"fen {fen}", patience)
    limits = f"depth {depth} movetime {round(patience * 1000)}"
    answer = engine.go(limits, f"fen {fen}", patience + 30)
    # The engine's own clock where it is fine enough, else ours.
    seconds = answer.last("time") / 1000
    seconds = seconds if seconds >= 0.1 else answer.seconds
    return seconds, answer.last("nodes") / seconds


def depth_of(engine, fen, seconds, patience):
    """The first depth that the engine needs at least so many seconds for, DEEPEST when none does: a
    mate ends a search early at every depth."""
    for depth in range(8, DEEPEST):
        if measure(engine, fen, depth, patience)[0] >= seconds:
            return depth
    return DEEPEST


def side_by_side(engines, fen, depth, patience, before):
    """(seconds, nodes per second of all together) of engines that search at the same time."""
    with ThreadPoolExecutor(len(engines)) as pool:
        results = list(pool.map(lambda e: measure(e, fen, depth, patience, before), engines))
    return max(result[0] for result in results), sum(result[1] for result in results)


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
    return one, many, one / many, speed_gain(single, several)


def speed_gain(single, several):
    """Gain in nodes per second from two lists of (seconds, nps)."""
    return median(run[1] for run in several) / median(run[1] for run in single)


def measure_position(fen, args, engines, alone, maker):
    """One row: depth, gain_row, and the machine's own gain in speed or None."""
    depth = args.depth
    if args.seconds:
        depth = depth_of(engines[0], fen, args.seconds, args.patience)
    groups = [engines[:1], engines[1:]] + ([alone] if alone else [])
    runs = [[] for _ in groups]
    for turn in range(args.runs):
        before = 2 + turn if args.vary else 0
        order = list(range(len(groups)))
        for which in order if turn % 2 == 0 else reversed(order):
            search = lambda: side_by_side(groups[which], fen, depth, args.patience, before)
            runs[which].append(maker.undisturbed(search))
    return depth, *gain_row(*runs[:2]), speed_gain(runs[0], runs[2]) if alone else None


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("engine")
    parser.add_argument("--depth", type=int, default=14)
    parser.add_argument("--seconds", type=float, help="choose the depth by the time of one thread")
    parser.add_argument("--threads", type=int, default=2)
    parser.add_argument("--runs", type=int, default=3)
    parser.add_argument("--hash", type=int, default=128, help="MB")
    parser.add_argument("--positions", type=int, default=len(MIDDLEGAMES))
    parser.add_argument("--patience", type=float, default=600, help="seconds for one search")
    parser.add_argument("--vary", action="store_true", help="begin runs with different tables")
    parser.add_argument("--machine", action="store_true", help="measure the machine's limit too")
    parser.add_argument("--stolen", type=float, default=math.inf, help="percent; none: any")
    args = parser.parse_args()

    def start(threads):
        return Engine(args.engine, {"Threads": threads, "Hash": args.hash, "OwnBook": "false"})

    engines = [start(1), start(args.threads)]
    alone = [start(1) for _ in range(args.threads)] if args.machine else []
    maker = Runs(args.stolen)
    rows = []
    try:
        heading = f"position depth    1 thread {args.threads:2} threads    gain  nps gain"
        print(heading + ("   machine" if alone else ""))
        for number, fen in enumerate(MIDDLEGAMES[: args.positions], 1):
            rows.append(measure_position(fen, args, engines, alone, maker))
            depth, one, many, gain, speed, limit = rows[-1]
            row = f"{number:8} {depth:5} {one:9.2f} s {many:8.2f} s {gain:7.2f} {speed:9.2f}"
            print(row + (f" {limit:9.2f}" if alone else ""), flush=True)
    finally:
        for engine in engines + alone:
            engine.quit()
    gains = [row[3] for row in rows]
    print(
        f"median gain {median(gains):.2f}, lowest {min(gains):.2f}, highest {max(gains):.2f}; "
        f"median gain in nodes per second {median(row[4] for row in rows):.2f}"
        + (f", of the machine {median(row[5] for row in rows):.2f}" if alone else "")
    )
    if args.stolen < math.inf:
        print(f"{maker.repeated} runs made again, {maker.disturbed} disturbed ones left")


if __name__ == "__main__":
    main()
